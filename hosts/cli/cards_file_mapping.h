// The text of a cards file, read in place: mapped from the page cache where the system
// maps files (no copy, and no memory of its own beyond what the cards take), read into
// memory elsewhere.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zorvat::cli::json_cards {

class CardsFileMapping {
 public:
  // Throws CardsFileError when the file cannot be read.
  explicit CardsFileMapping(const std::string& path);
  ~CardsFileMapping();
  CardsFileMapping(const CardsFileMapping&) = delete;
  CardsFileMapping& operator=(const CardsFileMapping&) = delete;

  std::string_view text() const { return text_; }
  // The file's pages before `position` (a place in text()) are read and converted:
  // a mapped file gives them back, so that the input's pages and the cards made from
  // them are never all in memory at once. (Read again, as for an error message, they
  // come back from the file unchanged.)
  void release_before(const char* position);

 private:
  std::string_view text_;
  void* mapping_ = nullptr;   // the mapped file; null when it is read or empty
  std::size_t released_ = 0;  // bytes of the mapping given back so far
  std::string read_;          // the file read into memory, where it is not mapped
};

}  // namespace zorvat::cli::json_cards
