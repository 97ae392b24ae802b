// The code page a payroll system reads its import file in. Text stays UTF-8 inside;
// the file step converts the whole text once, as it writes the file, and a reader
// converts a file back the same way. Each host supplies the conversion its platform
// has (iconv, the Win32 calls); UTF-8 itself needs none.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zorvat {

class CodePage {
 public:
  virtual ~CodePage() = default;

  // The name a user knows it by: "windows-1252", "utf-8".
  virtual std::string name() const = 0;

  // Appends `text` (UTF-8) in the code page. A character the code page lacks becomes
  // what the platform's conversion makes of it ("?", or a letter like it).
  virtual void encode(std::string_view text, std::string& out) const = 0;

  // Appends `bytes` (in the code page) as UTF-8; a byte the code page does not define
  // becomes U+FFFD.
  virtual void decode(std::string_view bytes, std::string& out) const = 0;

  // True when ASCII text comes out unchanged, so that the file step may copy it as it
  // stands. The default tries every ASCII character once.
  virtual bool keeps_ascii() const;
};

// UTF-8 itself: both ways unchanged.
class Utf8CodePage final : public CodePage {
 public:
  std::string name() const override { return "utf-8"; }
  void encode(std::string_view text, std::string& out) const override { out += text; }
  void decode(std::string_view bytes, std::string& out) const override { out += bytes; }
  bool keeps_ascii() const override { return true; }
};
const CodePage& utf8_code_page();

// The name a numbered code page is reported by: "windows-1252" (1250 to 1258), "utf-8"
// (65001), otherwise "cp" and the number ("cp850").
std::string code_page_name(unsigned number);

// Whether the code page writes `character` so that it reads back as itself (a letter
// it only writes like another, "Ł" as "L", it lacks).
bool code_page_has(const CodePage& code_page, char32_t character);

// The characters of `text` the code page lacks, each once, in the order they first
// appear. ASCII text costs one pass when the code page keeps ASCII.
std::vector<char32_t> characters_missing(const CodePage& code_page, std::string_view text);

}  // namespace zorvat
