#include "zorvat/file_step.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "zorvat/error.h"
#include "zorvat/unicode.h"

namespace zorvat {

long file_error_from_posix(int error) {
  using std::errc;
  const auto is = [error](errc code) { return error == static_cast<int>(code); };
  if (is(errc::no_such_file_or_directory) || is(errc::not_a_directory))
    return rt::kPathNotFound;  // a folder on the way is missing, or is a file
  if (is(errc::permission_denied) || is(errc::operation_not_permitted) ||
      is(errc::read_only_file_system) || is(errc::device_or_resource_busy) ||
      is(errc::text_file_busy))
    return rt::kPermissionDenied;
  if (is(errc::no_space_on_device) || is(errc::file_too_large)) return rt::kDiskFull;
#ifdef EDQUOT
  if (error == EDQUOT) return rt::kDiskFull;
#endif
  if (is(errc::filename_too_long) || is(errc::invalid_argument) || is(errc::illegal_byte_sequence))
    return rt::kBadFileNameOrNumber;
  if (is(errc::io_error)) return rt::kDeviceIoError;
  if (is(errc::too_many_files_open) || is(errc::too_many_files_open_in_system))
    return rt::kTooManyFiles;
  return rt::kPathFileAccessError;  // a directory in the way, a rename across devices, ...
}

long file_error_from_win32(unsigned long error) {
  switch (error) {
    case 2:  // ERROR_FILE_NOT_FOUND
      return rt::kFileNotFound;
    case 3:   // ERROR_PATH_NOT_FOUND
    case 15:  // ERROR_INVALID_DRIVE
    case 53:  // ERROR_BAD_NETPATH
    case 67:  // ERROR_BAD_NET_NAME
      return rt::kPathNotFound;
    case 5:   // ERROR_ACCESS_DENIED
    case 19:  // ERROR_WRITE_PROTECT
    case 32:  // ERROR_SHARING_VIOLATION
    case 33:  // ERROR_LOCK_VIOLATION
      return rt::kPermissionDenied;
    case 39:   // ERROR_HANDLE_DISK_FULL
    case 112:  // ERROR_DISK_FULL
      return rt::kDiskFull;
    case 123:  // ERROR_INVALID_NAME
    case 161:  // ERROR_BAD_PATHNAME
    case 206:  // ERROR_FILENAME_EXCED_RANGE
      return rt::kBadFileNameOrNumber;
    case 4:  // ERROR_TOO_MANY_OPEN_FILES
      return rt::kTooManyFiles;
    case 23:    // ERROR_CRC
    case 1117:  // ERROR_IO_DEVICE
      return rt::kDeviceIoError;
    default:  // ERROR_DIRECTORY and the rest
      return rt::kPathFileAccessError;
  }
}

void write_in_code_page(OutputStream& stream, const CodePage& code_page, std::string_view text) {
  // A piece of 1 MiB keeps the converted copy small beside a file of hundreds of
  // megabytes, and the calls few.
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  const bool ascii_kept = code_page.keeps_ascii();
  std::string converted;
  while (!text.empty()) {
    std::size_t length = std::min(kPiece, text.size());
    // Back to the start of a character: a continuation byte is 10xxxxxx.
    while (length < text.size() && length > 0 &&
           (static_cast<unsigned char>(text[length]) & 0xC0u) == 0x80u)
      --length;
    if (length == 0) length = std::min(kPiece, text.size());  // no character starts here
    const std::string_view piece = text.substr(0, length);
    text.remove_prefix(length);
    if (ascii_kept && is_ascii(piece)) {
      stream.write(piece);
      continue;
    }
    converted.clear();
    code_page.encode(piece, converted);
    stream.write(converted);
  }
}

void SafeOutputFiles::write_file(const std::string& path, std::string_view contents) {
  if (path.empty()) raise_runtime(rt::kBadFileNameOrNumber);
  switch (file_system_.kind(path)) {
    case FileSystem::Kind::Directory:
      raise_runtime(rt::kPathFileAccessError);
    case FileSystem::Kind::Other: {
      // A device or a pipe cannot be replaced; it is written in place.
      auto stream = file_system_.open_for_output(path);
      write_in_code_page(*stream, code_page_, contents);
      stream->finish();
      return;
    }
    case FileSystem::Kind::Missing:
    case FileSystem::Kind::Regular:
      break;
  }
  std::string temporary;
  auto stream = file_system_.create_beside(path, temporary);
  try {
    write_in_code_page(*stream, code_page_, contents);
    stream->finish();
    stream.reset();
    file_system_.replace(temporary, path);
  } catch (...) {
    stream.reset();
    file_system_.remove(temporary);
    throw;
  }
}

}  // namespace zorvat
