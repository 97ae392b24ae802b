// The file step's primitives on a POSIX system: a uniquely named temporary file in the
// target's folder, written, synced and renamed over the target.
#pragma once

#include "zorvat/file_step.h"

namespace zorvat::cli {

FileSystem& posix_file_system();

// The command line's output files: the safe file step over the POSIX file system.
OutputFiles& safe_output_files();

}  // namespace zorvat::cli
