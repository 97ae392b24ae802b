#include "builtin_formats.h"

#include "adp7/adp7.h"
#include "generic/generic.h"
#include "intuitpac/intuitpac.h"
#include "pcpaylink/pcpaylink.h"
#include "pcpreview/pcpreview.h"
#include "peachtree/peachtree.h"
#include "primepay/primepay.h"
#include "qb2000/qb2000.h"

namespace zorvat::formats {
namespace {

template <class Class>
void add(ExportRegistry& registry, std::string name) {
  registry.add(std::move(name), [](ExportContext context) -> std::unique_ptr<ExportClass> {
    return std::make_unique<Class>(context);
  });
}

ExportRegistry make_registry() {
  ExportRegistry registry;
  add<Generic>(registry, "Generic");
  add<ADP7>(registry, "ADP7");
  add<IntuitPAC>(registry, "IntuitPAC");
  add<PCPayLink>(registry, "PCPayLink");
  add<PCPreview>(registry, "PCPreview");
  add<Peachtree>(registry, "Peachtree");
  add<PrimePay>(registry, "PrimePay");
  add<QB2000>(registry, "QB2000");
  return registry;
}

}  // namespace

const ExportRegistry& builtin_formats() {
  static const ExportRegistry registry = make_registry();
  return registry;
}

}  // namespace zorvat::formats
