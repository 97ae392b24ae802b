// The late-bound view of the host's objects: a time-card collection is enumerated
// in its own order, and every value is read by property name as a Variant.
//
// Hosts adapt their own objects to this interface (a JSON document on the command
// line, IDispatch under COM). Property names match as the host's dispatch interface
// matches them: without regard to case. A property the object does not have raises
// 438, never a default.
#pragma once

#include <memory>
#include <string_view>

#include "zorvat/variant.h"

namespace zorvat {

class Enumerator {
 public:
  virtual ~Enumerator() = default;
  // Fetches the next element into `element`; false once the collection is exhausted.
  virtual bool next(Variant& element) = 0;
};

class AutomationObject {
 public:
  virtual ~AutomationObject() = default;
  // Reads a property by name. Raises 438 when the object has no such property.
  virtual Variant get(std::string_view property) const = 0;
  // Starts a for-each over the object. Raises 438 when it is not a collection.
  virtual std::unique_ptr<Enumerator> enumerate() const;
};

// Reads a property of a Variant that must hold an object (13 Type mismatch
// otherwise, as a late-bound call on a non-object fails).
Variant get_property(const Variant& object, std::string_view property);

// Calls `visit(element)` for each element of the collection held by `collection`,
// in the collection's own order.
template <class Visit>
void for_each(const Variant& collection, Visit&& visit);

// Raises 438 "Object doesn't support this property or method".
[[noreturn]] void raise_not_supported();

const AutomationObject& object_of(const Variant& value);

template <class Visit>
void for_each(const Variant& collection, Visit&& visit) {
  auto enumerator = object_of(collection).enumerate();
  Variant element;
  while (enumerator->next(element)) visit(element);
}

}  // namespace zorvat
