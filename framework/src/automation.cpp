#include "zorvat/automation.h"

#include "zorvat/error.h"

namespace zorvat {

std::unique_ptr<Enumerator> AutomationObject::enumerate() const {
  raise_not_supported();
}

void raise_not_supported() {
  raise_runtime(rt::kObjectDoesntSupport);
}

const AutomationObject& object_of(const Variant& value) {
  if (!value.is_object() || !value.as_object()) raise_runtime(rt::kTypeMismatch);
  return *value.as_object();
}

Variant get_property(const Variant& object, std::string_view property) {
  return object_of(object).get(property);
}

}  // namespace zorvat
