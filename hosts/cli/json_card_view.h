// The late-bound view of the cells: the objects the classes read the cards through,
// with the values' JSON types turned into the host's Variants. Reads are put on the
// store's trail as they are made.
#pragma once

#include "json_card_store.h"
#include "zorvat/variant.h"

namespace zorvat::cli::json_cards {

// The time-card collection of a loaded store: its top-level object, which enumerates
// and counts the "cards" array.
Variant card_collection(StoreRef store);

// The store behind a collection made by card_collection; null for any other object.
const Store* store_of(const Variant& cards);

}  // namespace zorvat::cli::json_cards
