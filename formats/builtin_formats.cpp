#include "builtin_formats.h"

#include "generic/generic.h"

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
  return registry;
}

}  // namespace

const ExportRegistry& builtin_formats() {
  static const ExportRegistry registry = make_registry();
  return registry;
}

}  // namespace zorvat::formats
