// Reading a whole file, or what is left of a stream, into memory through the C library:
// the cards where no file mapping is had, the settings file, standard input on Windows.
#pragma once

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

namespace zorvat::cli {

// Appends what is left of `file` to `bytes`; false on a read error.
inline bool append_rest_of(std::FILE* file, std::string& bytes) {
  char chunk[1 << 16];
  std::size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes.append(chunk, got);
  return std::ferror(file) == 0;
}

// Appends the whole file at `path` to `bytes`; why it cannot be read, when it cannot.
inline std::optional<std::string> read_file_bytes(const std::string& path, std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return std::string(std::strerror(errno));
  const bool read = append_rest_of(file, bytes);
  std::fclose(file);
  if (!read) return std::string("read error");
  return std::nullopt;
}

}  // namespace zorvat::cli
