#include "posix_file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "zorvat/error.h"

namespace zorvat::cli {
namespace {

[[noreturn]] void raise_errno(int error) {
  raise_runtime(file_error_from_posix(error));
}

class PosixStream final : public OutputStream {
 public:
  explicit PosixStream(int fd) : fd_(fd) {}
  ~PosixStream() override {
    if (fd_ >= 0) ::close(fd_);
  }

  void write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t written = ::write(fd_, bytes.data(), bytes.size());
      if (written < 0) {
        if (errno == EINTR) continue;
        raise_errno(errno);
      }
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
  }

  void finish() override {
    // Devices and pipes cannot be synced (EINVAL); a file must reach the disk before it
    // replaces the previous one.
    if (::fsync(fd_) != 0 && errno != EINVAL && errno != EROFS) raise_errno(errno);
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0) raise_errno(errno);
  }

 private:
  int fd_;
};

std::string folder_of(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

// The mode a new file gets from the user's file-creation mask.
mode_t new_file_mode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return static_cast<mode_t>(0666 & ~mask);
}

class PosixFileSystem final : public FileSystem {
 public:
  Kind kind(const std::string& path) override {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return Kind::Missing;
    if (S_ISREG(info.st_mode)) return Kind::Regular;
    if (S_ISDIR(info.st_mode)) return Kind::Directory;
    return Kind::Other;
  }

  std::unique_ptr<OutputStream> create_beside(const std::string& target,
                                              std::string& temporary_path) override {
    struct stat info {};
    const bool target_exists = ::stat(target.c_str(), &info) == 0;
    // A file that nobody may write is kept, as on Windows: the rename would replace it
    // here, but marking a file read-only is how a user protects it.
    if (target_exists && S_ISREG(info.st_mode) && (info.st_mode & 0222) == 0) raise_errno(EACCES);

    // A short name, so that a target name near the length limit still has room.
    std::string name = folder_of(target) + "/.zorvat-XXXXXX";
    const int fd = ::mkstemp(name.data());
    if (fd < 0) raise_errno(errno);
    temporary_path = name;
    auto stream = std::make_unique<PosixStream>(fd);
    // The new file takes the previous file's permissions, or a new file's.
    ::fchmod(fd, target_exists ? static_cast<mode_t>(info.st_mode & 07777) : new_file_mode());
    return stream;
  }

  std::unique_ptr<OutputStream> open_for_output(const std::string& path) override {
    const int fd = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0) raise_errno(errno);
    return std::make_unique<PosixStream>(fd);
  }

  void replace(const std::string& temporary, const std::string& target) override {
    if (::rename(temporary.c_str(), target.c_str()) != 0) raise_errno(errno);
  }

  void remove(const std::string& path) noexcept override {
    if (!path.empty()) ::unlink(path.c_str());
  }
};

}  // namespace

FileSystem& posix_file_system() {
  static PosixFileSystem file_system;
  return file_system;
}

FileSystem& system_file_system() {
  return posix_file_system();
}

}  // namespace zorvat::cli
