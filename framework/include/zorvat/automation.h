// The late-bound view of the host's objects: a time-card collection is enumerated
// in its own order, and every value is read by property name as a Variant.
//
// Hosts adapt their own objects to this interface (a JSON document on the command
// line, IDispatch under COM). Property names match as the host's dispatch interface
// matches them: without regard to case. A property the object does not have raises
// 438, never a default.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "zorvat/variant.h"

namespace zorvat {

// A property name the classes read from card after card, declared once as a constant
// (see zorvat/time_card.h). A host that resolves names, to a field of its key table or
// to a DISPID, keeps the answer under the name's ordinal: every read after the first
// skips the lookup, as a compiled automation client binds its DISPIDs once.
class PropertyName {
 public:
  constexpr explicit PropertyName(std::string_view text) : text_(text) {}
  PropertyName(const PropertyName&) = delete;
  PropertyName& operator=(const PropertyName&) = delete;

  std::string_view text() const { return text_; }
  // A small number, distinct for every PropertyName object of the process, taken at
  // the first call; hosts index their resolutions by it.
  std::uint32_t ordinal() const {
    const std::uint32_t taken = ordinal_.load(std::memory_order_relaxed);
    return taken != 0 ? taken - 1 : take_ordinal();
  }
  // The ordinal if it was taken, else kNoOrdinal, which is larger than any ordinal: a
  // host's read can look its table up by this without a call, and go the long way
  // (which takes the ordinal) when the table has nothing for it.
  static constexpr std::uint32_t kNoOrdinal = 0xFFFFFFFF;
  std::uint32_t ordinal_if_taken() const {
    return ordinal_.load(std::memory_order_relaxed) - 1;  // 0 - 1 is kNoOrdinal
  }

 private:
  std::uint32_t take_ordinal() const;
  std::string_view text_;
  mutable std::atomic<std::uint32_t> ordinal_{0};  // the ordinal + 1; 0 until taken
};

class Enumerator {
 public:
  virtual ~Enumerator() = default;
  // Fetches the next element into `element`; false once the collection is exhausted.
  virtual bool next(Variant& element) = 0;
  // How many elements are still to come, where the host knows it without a call on
  // the collection (a count it keeps itself); 0 when it does not. Only a hint for
  // making room: the enumeration alone decides where the collection ends, and no
  // host asks the collection for its Count to answer this.
  virtual std::size_t remaining_hint() const { return 0; }
};

class AutomationObject {
 public:
  virtual ~AutomationObject() = default;
  // Reads a property by name. Raises 438 when the object has no such property.
  virtual Variant get(std::string_view property) const = 0;
  // The same read by a declared name; hosts that resolve names override it to keep
  // the resolution.
  virtual Variant get(const PropertyName& property) const { return get(property.text()); }
  // The same read converted to a number as to_double converts it (the minutes of a
  // card). Hosts that hold numbers as numbers override it to hand them over without
  // a Variant; any other value still goes through to_double, with its errors.
  virtual double get_number(const PropertyName& property) const { return to_double(get(property)); }
  // The same read appended to `out` as to_concat_text writes it (the text of an ID or
  // a name). Hosts that hold text as text override it to copy it once, straight from
  // where they keep it; any other value still goes through to_concat_text.
  virtual void append_text(const PropertyName& property, std::string& out) const {
    out += to_concat_text(get(property));
  }
  // Starts a for-each over the object. Raises 438 when it is not a collection.
  virtual std::unique_ptr<Enumerator> enumerate() const;
};

// Reads a property of a Variant that must hold an object (13 Type mismatch
// otherwise, as a late-bound call on a non-object fails).
Variant get_property(const Variant& object, std::string_view property);
Variant get_property(const Variant& object, const PropertyName& property);
// to_double(get_property(object, property)), through the host's own conversion.
double get_number(const Variant& object, const PropertyName& property);
// out += to_concat_text(get_property(object, property)), through the host's own copy.
void append_text(std::string& out, const Variant& object, const PropertyName& property);

// Calls `visit(element)` for each element of the collection held by `collection`,
// in the collection's own order.
template <class Visit>
void for_each(const Variant& collection, Visit&& visit);

// for_each for a record loop: `write(element)` appends each element's records to
// `text`. At the first element that writes anything, when the host knows how many
// elements follow, `text` is given room for them all at that element's size, with
// a margin; the file then grows in place instead of being copied at each doubling.
// The room is only reserved: pages are taken as records are written.
template <class Write>
void for_each_record(const Variant& collection, std::string& text, Write&& write);

// Makes room in `text` for `remaining` more records of about `record_bytes` each.
// A room too large to reserve is skipped; the text then grows as it would have.
void reserve_for_records(std::string& text, std::size_t record_bytes, std::size_t remaining);

// Raises 438 "Object doesn't support this property or method".
[[noreturn]] void raise_not_supported();

const AutomationObject& object_of(const Variant& value);

template <class Visit>
void for_each(const Variant& collection, Visit&& visit) {
  auto enumerator = object_of(collection).enumerate();
  Variant element;
  while (enumerator->next(element)) visit(element);
}

template <class Write>
void for_each_record(const Variant& collection, std::string& text, Write&& write) {
  auto enumerator = object_of(collection).enumerate();
  Variant element;
  bool reserved = false;
  while (enumerator->next(element)) {
    const std::size_t before = text.size();
    write(element);
    if (!reserved && text.size() != before) {
      reserve_for_records(text, text.size() - before, enumerator->remaining_hint());
      reserved = true;
    }
  }
}

}  // namespace zorvat
