// Each export class's entry in the class list: how to create it, and how
// reconciliation expects and reads back the file it writes. Every class folder defines
// `<folder>::class_rules()`; the list (formats/CMakeLists.txt) registers them together.
#pragma once

#include <memory>

#include "zorvat/export_class.h"
#include "zorvat/reconcile/reconcile.h"

namespace zorvat::formats {

// The ClassRules::create of an export class.
template <class Class>
std::unique_ptr<ExportClass> create_export_class(ExportContext context) {
  return std::make_unique<Class>(context);
}

}  // namespace zorvat::formats
