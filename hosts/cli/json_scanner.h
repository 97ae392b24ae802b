// Just enough JSON to find the fields of a cards file's top-level object and the
// boundaries of its cards, without parsing them: the loader hands what the scanner
// finds to the parser a piece at a time. Only the nesting is checked here; the parser
// checks the rest.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace zorvat::cli::json_cards {

// A run of whole elements of an array, as the scanner cuts it.
struct ArrayPiece {
  std::string_view text;  // the elements and the commas between them
  std::size_t count;      // how many elements: the commas in `text` + 1
  bool last;              // the array's last piece, up to its "]"
};

class JsonScanner {
 public:
  // `name` stands for the file in messages.
  JsonScanner(std::string_view json, std::string name) : json_(json), name_(std::move(name)) {}

  std::string_view json() const { return json_; }
  std::size_t pos() const { return pos_; }
  bool at_end() const { return pos_ == json_.size(); }

  // The byte at the scanner's place; '\0' at the end.
  char peek() const { return pos_ < json_.size() ? json_[pos_] : '\0'; }
  // Passes over `c` when it is the byte at the scanner's place.
  bool take(char c) {
    if (peek() != c || pos_ >= json_.size()) return false;
    ++pos_;
    return true;
  }
  void skip_blanks();
  // Passes over the string at the scanner's place and returns it as written, quotes and
  // escapes included.
  std::string_view take_string();
  // Passes over one value: a string, or a balanced object or array, or a bare scalar.
  // Returns it as written.
  std::string_view skip_value();
  // Passes over the rest of an array whose "[" was just taken, handing its elements
  // to `take_piece` in pieces: every comma between two elements is a place to cut, and
  // a piece is cut at the first one `piece_bytes` or more past its start. An empty
  // array hands over nothing.
  void cut_array(std::size_t piece_bytes, const std::function<void(const ArrayPiece&)>& take_piece);

  // A CardsFileError: "cards file <name>: <place>: <what>".
  [[noreturn]] void fail(const std::string& place, const std::string& what) const;
  // A CardsFileError for text that is not JSON, with the line and column of the fault
  // when a parser that reports them finds it, else the scanner's place.
  [[noreturn]] void syntax_error() const;

 private:
  void skip_string();
  template <class Separator>
  std::size_t scan_array(std::size_t from, Separator&& separator);

  std::string_view json_;
  std::string name_;
  std::size_t pos_ = 0;
};

}  // namespace zorvat::cli::json_cards
