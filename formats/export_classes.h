// The export classes of this build, from the class list, each with its entry: how to
// create it by class name or ProgID, and how reconciliation reads what it writes.
#pragma once

#include <string_view>
#include <vector>

#include "zorvat/export_class.h"
#include "zorvat/reconcile/reconcile.h"

namespace zorvat::formats {

// Every class, in the list's order.
const std::vector<reconcile::ClassRules>& export_classes();

// Adds a class after the listed ones. Only a test binary does this, for a class of its
// own, and only before anything has used the list (a static initialiser of the
// binary); a later call raises std::logic_error.
void add_export_class(const reconcile::ClassRules& rules);

// The class by class name or ProgID, without regard to case; nullptr when unknown.
const reconcile::ClassRules* find_export_class(std::string_view name_or_prog_id);

// The classes as a registry the hosts create instances from.
const ExportRegistry& export_registry();

}  // namespace zorvat::formats
