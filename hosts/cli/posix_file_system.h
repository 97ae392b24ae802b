// The file step's primitives on a POSIX system: a uniquely named temporary file in the
// target's folder, written, synced and renamed over the target.
#pragma once

#include "platform.h"
#include "zorvat/file_step.h"

namespace zorvat::cli {

FileSystem& posix_file_system();

}  // namespace zorvat::cli
