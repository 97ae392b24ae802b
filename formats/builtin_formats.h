// Every export class this component ships, creatable by class name or ProgID.
#pragma once

#include "zorvat/export_class.h"

namespace zorvat::formats {

const ExportRegistry& builtin_formats();

}  // namespace zorvat::formats
