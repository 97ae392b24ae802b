// Reads an IntuitPAC ".clk" file back, in the full edition's two-record layout or the
// Jr editions' one-record layout: one record per amount, keyed by the four-digit
// employee part, named by the pay code written with it ("REG" and "OT1" in the Jr
// layout, whose first two amounts carry no pay code).
#pragma once

#include <string_view>

#include "zorvat/reconcile/records.h"
#include "zorvat/settings.h"

namespace zorvat::formats {

reconcile::FileContents read_intuitpac_file(std::string_view bytes, const SettingsFields& settings,
                                            bool jr_edition);

}  // namespace zorvat::formats
