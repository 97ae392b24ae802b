// The host's automation objects as the export classes see them: a collection is
// walked through its _NewEnum enumerator (IEnumVARIANT), and every property is read
// late-bound by name through IDispatch, the value converted to a Variant.
//
// Reading by name is the hot path of an export (ten and more reads per card), so a
// name's DISPID is resolved once per export and kept in a MemberCache. Objects in the
// same place of the tree (the collection, its cards, a card's Days, their days) share
// one cache, as they are objects of one host class; a cached DISPID that an object
// does not know is resolved again for that object alone.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "raii.h"
#include "zorvat/automation.h"
#include "zorvat/variant.h"

namespace zorvat::com {

class MemberCache {
 public:
  struct Member {
    std::string name;
    DISPID id;
    // The cache for objects this member returns (a card's Days collection).
    std::shared_ptr<MemberCache> objects;
  };

  // The member named exactly `name`, or null when it has not been resolved yet.
  Member* find(std::string_view name);
  Member& add(std::string_view name, DISPID id);
  // The same for a declared name: found by its ordinal once it has been resolved.
  Member* find(const PropertyName& name);
  Member& add(const PropertyName& name, DISPID id);
  // The cache shared by the elements the collection's enumerator yields.
  const std::shared_ptr<MemberCache>& elements();

 private:
  void remember(std::uint32_t ordinal, const Member& member);
  static constexpr std::uint32_t kMostOrdinals = 4096;
  std::vector<Member> members_;
  std::vector<std::uint32_t> by_ordinal_;  // index in members_ + 1; 0: not resolved
  std::shared_ptr<MemberCache> elements_;
};

// Wraps the host's object as the Variant an export class receives. A fresh cache
// starts a fresh export: every name is resolved once more.
Variant wrap_dispatch(IDispatch* object, std::shared_ptr<MemberCache> cache);

// Converts an automation VARIANT to a Variant (by-reference values are followed).
// Objects are wrapped with `cache`; unsupported subtypes raise 13 Type mismatch.
Variant from_variant(const VARIANT& value, const std::shared_ptr<MemberCache>& cache);

// Converts a Variant back to an automation VARIANT (which must be empty).
void to_variant(const Variant& value, VARIANT* target);

// Whether two Variants hold the same subtype and value.
bool same_value(const Variant& a, const Variant& b);

// Raises the error a failed late-bound call stands for: 438 for an unknown member, the
// callee's own number and description for DISP_E_EXCEPTION, the classic number of a
// standard failure code, and otherwise the failure code itself as "Automation error".
[[noreturn]] void raise_call_failure(HRESULT failure, EXCEPINFO* exception);

}  // namespace zorvat::com
