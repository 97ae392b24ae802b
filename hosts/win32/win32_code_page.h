// Code pages through the Win32 conversions, as every Windows program writes and reads
// text files: UTF-8 to UTF-16 to the code page, and back. A character the code page
// lacks becomes what WideCharToMultiByte gives for it (a letter like it where Windows
// has one, "?" otherwise).
#pragma once

#include <memory>
#include <string>

#include "zorvat/code_page.h"

namespace zorvat::win32 {

class Win32CodePage final : public CodePage {
 public:
  Win32CodePage(unsigned number, std::string name) : number_(number), name_(std::move(name)) {}

  std::string name() const override { return name_; }
  void encode(std::string_view text, std::string& out) const override;
  void decode(std::string_view bytes, std::string& out) const override;

  unsigned number() const { return number_; }

 private:
  unsigned number_;
  std::string name_;
};

// The system's ANSI code page (CP_ACP), which classic components write their text
// files in: "windows-1252" on a US Windows.
const CodePage& ansi_code_page();

// The system locale's ANSI code page, whatever a process's manifest makes its own
// (zorvat.exe's makes it UTF-8 for its arguments and file names).
unsigned system_ansi_code_page();

// True when Windows has the code page numbered `number`.
bool has_code_page(unsigned number);

}  // namespace zorvat::win32
