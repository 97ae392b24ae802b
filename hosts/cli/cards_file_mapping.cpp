#include "cards_file_mapping.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "file_bytes.h"
#include "json_cards.h"

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#define ZORVAT_HAVE_MMAP 1
#else
#define ZORVAT_HAVE_MMAP 0
#endif

namespace zorvat::cli::json_cards {

#if ZORVAT_HAVE_MMAP

CardsFileMapping::CardsFileMapping(const std::string& path) {
  const auto cannot_read = [&](const std::string& why) {
    return CardsFileError("cards file " + path + ": cannot be read (" + why + ")");
  };
  const int fd = ::open(path.c_str(), O_RDONLY);
  if (fd < 0) throw cannot_read(std::strerror(errno));
  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    throw cannot_read("not a regular file");
  }
  const auto size = static_cast<std::size_t>(info.st_size);
  if (size == 0) {
    ::close(fd);
    return;
  }
  void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  ::close(fd);
  if (mapped == MAP_FAILED) throw cannot_read(std::strerror(errno));
  ::madvise(mapped, size, MADV_SEQUENTIAL);
  mapping_ = mapped;
  text_ = std::string_view(static_cast<const char*>(mapped), size);
}

CardsFileMapping::~CardsFileMapping() {
  if (mapping_ != nullptr) ::munmap(mapping_, text_.size());
}

void CardsFileMapping::release_before(const char* position) {
  if (mapping_ == nullptr) return;
  static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const auto offset = static_cast<std::size_t>(position - text_.data());
  const std::size_t whole_pages = offset / page * page;
  if (whole_pages > released_) {
    ::madvise(static_cast<char*>(mapping_) + released_, whole_pages - released_, MADV_DONTNEED);
    released_ = whole_pages;
  }
}

#else

CardsFileMapping::CardsFileMapping(const std::string& path) {
  const auto cannot_read = [&](const std::string& why) {
    return CardsFileError("cards file " + path + ": cannot be read (" + why + ")");
  };
  if (auto problem = read_file_bytes(path, read_)) throw cannot_read(*problem);
  text_ = read_;
}

CardsFileMapping::~CardsFileMapping() = default;

void CardsFileMapping::release_before(const char*) {}

#endif

}  // namespace zorvat::cli::json_cards
