// Settings strings: the split and the join give back the same string, and the field
// tests either answer or raise a classic error.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "zorvat/error.h"
#include "zorvat/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string setup(reinterpret_cast<const char*>(data), size);
  const zorvat::SettingsFields fields(setup);
  if (fields.join() != setup) std::abort();
  if (setup.empty() != (fields.size() == 0)) std::abort();
  for (const std::string& field : fields.fields()) {
    try {
      zorvat::field_equals_number(field, 1);
    } catch (const zorvat::Error&) {
    }
    try {
      zorvat::field_is_true(field);
    } catch (const zorvat::Error&) {
    }
    zorvat::field_in_range(field, 0, 99);
  }
  return 0;
}
