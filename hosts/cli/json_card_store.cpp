#include "json_card_store.h"

#include <algorithm>

namespace zorvat::cli::json_cards {

std::uint32_t Store::key_id(std::string_view name) {
  if (auto found = ids_.find(name); found != ids_.end()) return found->second;
  return add_key(name);
}

std::uint32_t Store::add_key(std::string_view name) {
  const auto id = static_cast<std::uint32_t>(names_.size());
  names_.emplace_back(name);
  ids_.emplace(std::string(name), id);
  const std::string fold_name = folded(name);
  auto [fold_entry, added] =
      folded_ids_.emplace(fold_name, static_cast<std::uint32_t>(folded_of_.size()));
  static_cast<void>(added);
  folded_of_.push_back(fold_entry->second);
  position_hints_.push_back(0);
  flags_.push_back(static_cast<std::uint8_t>(
      (fold_name == "periodend" || fold_name == "periodstart" || fold_name == "daydate" ? kDateKey
                                                                                        : 0) |
      (fold_name == "days" ? kDaysKey : 0)));
  return id;
}

std::uint32_t Store::key_of_folded(std::uint32_t fold_id) const {
  const auto found = std::find(folded_of_.begin(), folded_of_.end(), fold_id);
  return static_cast<std::uint32_t>(found - folded_of_.begin());
}

bool Store::lookup(std::string_view name, std::uint32_t& exact, std::uint32_t& fold_id) const {
  exact = kNone;
  fold_id = kNone;
  if (auto found = ids_.find(name); found != ids_.end()) {
    exact = found->second;
    fold_id = folded_of_[exact];
  } else if (auto fold_found = folded_ids_.find(folded(name)); fold_found != folded_ids_.end()) {
    fold_id = fold_found->second;
  }
  return fold_id != kNone;
}

bool Store::lookup(const PropertyName& name, std::uint32_t& exact, std::uint32_t& fold_id) const {
  const std::uint32_t ordinal = name.ordinal();
  if (const Resolved* answer = resolved(ordinal)) {
    exact = answer->exact;
    fold_id = answer->fold_id;
    return fold_id != kNone;
  }
  const bool known = lookup(name.text(), exact, fold_id);
  if (ordinal < kMostResolvedNames) {
    if (ordinal >= resolved_.size()) resolved_.resize(ordinal + 1);
    resolved_[ordinal] = {exact, fold_id, true};
  }
  return known;
}

}  // namespace zorvat::cli::json_cards
