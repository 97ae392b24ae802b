// The file step, made safe: the whole text goes to a temporary file beside the target,
// is flushed to the disk, and then replaces the target in one rename. If anything
// fails on the way the temporary file is removed and the target is left exactly as
// it was, so a failed export never costs the clerk the previous file; and since the
// classes advance their batch, sequence and ticket numbers only after the write
// returned, a number is never used up by a file that was not written.
//
// The text is UTF-8 inside; the step writes it in the payroll system's code page, the
// one conversion of the text on its way out.
//
// The algorithm is the same on every platform; each host supplies the few file-system
// primitives (POSIX, Win32, or a test's fake) and maps its error codes with the
// tables below, so that a failure raises the same classic error everywhere.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "zorvat/code_page.h"
#include "zorvat/ui_services.h"

namespace zorvat {

// The classic file error (52, 53, 61, 70, 75, 76, ...) for a POSIX errno value or a
// Win32 error code from opening, writing, flushing or renaming an output file.
long file_error_from_posix(int error);
long file_error_from_win32(unsigned long error);

// An open output file.
class OutputStream {
 public:
  virtual ~OutputStream() = default;  // closes without reporting, if still open
  virtual void write(std::string_view bytes) = 0;
  // Flushes to the disk and closes; raises when any of it failed.
  virtual void finish() = 0;
};

// What the file step needs of a file system. Each member raises the classic file error
// when it fails, except `remove`, which is best effort.
class FileSystem {
 public:
  enum class Kind { Missing, Regular, Directory, Other };

  virtual ~FileSystem() = default;
  virtual Kind kind(const std::string& path) = 0;
  // Creates a new, empty file of a unique name in the target's folder and returns it
  // open for writing; its name goes to `temporary_path`.
  virtual std::unique_ptr<OutputStream> create_beside(const std::string& target,
                                                      std::string& temporary_path) = 0;
  // Opens an existing file that is not a regular one (a device, a pipe) for writing.
  virtual std::unique_ptr<OutputStream> open_for_output(const std::string& path) = 0;
  // Replaces (or creates) `target` by `temporary` in one step.
  virtual void replace(const std::string& temporary, const std::string& target) = 0;
  virtual void remove(const std::string& path) noexcept = 0;
};

// OutputFiles by the safe file step over a file system, in a code page.
class SafeOutputFiles final : public OutputFiles {
 public:
  SafeOutputFiles(FileSystem& file_system, const CodePage& code_page)
      : file_system_(file_system), code_page_(code_page) {}
  void write_file(const std::string& path, std::string_view contents) override;

  const CodePage& code_page() const { return code_page_; }

 private:
  FileSystem& file_system_;
  const CodePage& code_page_;
};

// Writes `text` (UTF-8) to `stream` in `code_page`, converted a piece at a time so that
// a large file is never held twice; a piece ends on a whole character. ASCII pieces go
// as they stand where the code page keeps ASCII.
void write_in_code_page(OutputStream& stream, const CodePage& code_page, std::string_view text);

}  // namespace zorvat
