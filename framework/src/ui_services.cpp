#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "zorvat/error.h"
#include "zorvat/ui_services.h"

namespace zorvat {
namespace {

// Maps the C library's error code of a failed open or write to the classic file
// error a class raises.
long file_error_number(int code) {
  switch (code) {
    case ENOENT:
      return rt::kPathNotFound;
    case ENOTDIR:
      return rt::kPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return rt::kPermissionDenied;
    case ENOSPC:
      return rt::kDiskFull;
#ifdef EDQUOT
    case EDQUOT:
      return rt::kDiskFull;
#endif
    case ENAMETOOLONG:
    case EINVAL:
      return rt::kBadFileNameOrNumber;
    default:
      return rt::kPathFileAccessError;
  }
}

class StdOutputFiles final : public OutputFiles {
 public:
  void write_file(const std::string& path, std::string_view contents) override {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) raise_runtime(file_error_number(errno));
    const std::size_t written =
        contents.empty() ? 0 : std::fwrite(contents.data(), 1, contents.size(), file);
    const int write_error = written == contents.size() ? 0 : errno;
    const int close_result = std::fclose(file);
    if (write_error != 0) raise_runtime(file_error_number(write_error));
    if (close_result != 0) raise_runtime(file_error_number(errno));
  }
};

class SystemClock final : public Clock {
 public:
  Date today() const override {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return Date::from_civil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  }
};

}  // namespace

OutputFiles& standard_output_files() {
  static StdOutputFiles files;
  return files;
}

const Clock& system_clock() {
  static const SystemClock clock;
  return clock;
}

}  // namespace zorvat
