#include "zorvat/automation.h"

#include <limits>
#include <new>

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

Variant get_property(const Variant& object, const PropertyName& property) {
  return object_of(object).get(property);
}

double get_number(const Variant& object, const PropertyName& property) {
  return object_of(object).get_number(property);
}

void append_text(std::string& out, const Variant& object, const PropertyName& property) {
  object_of(object).append_text(property, out);
}

void reserve_for_records(std::string& text, std::size_t record_bytes, std::size_t remaining) {
  // Never more than an eighth of the address space, so that a 32-bit process keeps
  // room for everything else it holds; past that the text grows as it always has.
  constexpr std::size_t kLargestRoom = std::numeric_limits<std::size_t>::max() / 8;
  if (remaining == 0 || record_bytes > kLargestRoom) return;
  // A quarter more than the first record's size for each: IDs and names vary in
  // length from card to card, and a room too small costs a full copy of the text.
  const std::size_t per_record = record_bytes + record_bytes / 4 + 1;
  if (per_record > kLargestRoom / remaining) return;
  const std::size_t room = per_record * remaining;
  if (room > text.max_size() - text.size()) return;
  try {
    text.reserve(text.size() + room);
  } catch (const std::bad_alloc&) {
    // No memory for it now: the text grows as it always has.
  }
}

std::uint32_t PropertyName::take_ordinal() const {
  static std::atomic<std::uint32_t> next{1};
  const std::uint32_t mine = next.fetch_add(1, std::memory_order_relaxed);
  std::uint32_t expected = 0;
  // Two threads reading a name for the first time at once agree on one of their
  // numbers; the other number is simply never used.
  if (ordinal_.compare_exchange_strong(expected, mine, std::memory_order_relaxed)) return mine - 1;
  return expected - 1;
}

}  // namespace zorvat
