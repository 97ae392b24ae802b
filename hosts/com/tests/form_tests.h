// What the form tests were told on their command line.
#pragma once

#include <filesystem>

namespace zorvat::com::testing {

// Where the screenshots of the forms go; empty when none are taken.
const std::filesystem::path& screenshot_folder();

}  // namespace zorvat::com::testing
