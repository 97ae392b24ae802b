// Code pages through iconv. A character the code page lacks is written as "?", one
// for each UTF-16 code unit it takes (as the Windows conversion writes a character it
// has no byte for), so that a fixed-width record keeps its width in bytes; a byte of
// the file the code page does not define reads as U+FFFD.
#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "code_page_names.h"
#include "code_page_option.h"
#include "zorvat/unicode.h"

namespace zorvat::cli {
namespace {

class IconvHandle {
 public:
  IconvHandle(const std::string& to, const std::string& from)
      : handle_(iconv_open(to.c_str(), from.c_str())) {}
  ~IconvHandle() {
    if (valid()) iconv_close(handle_);
  }
  IconvHandle(const IconvHandle&) = delete;
  IconvHandle& operator=(const IconvHandle&) = delete;

  // iconv_open fails with (iconv_t)-1, compared here as the number it is.
  bool valid() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

  // Converts the whole of `input`, appending to `out`; `on_error` is called where
  // the converter stops on a character it cannot take, and returns how many input
  // bytes to skip after appending its stand-in.
  template <class OnError>
  void convert(std::string_view input, std::string& out, OnError on_error) const {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);  // the initial shift state
    char* in = const_cast<char*>(input.data());
    std::size_t in_left = input.size();
    char buffer[16384];
    while (in_left > 0) {
      char* next = buffer;
      std::size_t room = sizeof buffer;
      const std::size_t result = iconv(handle_, &in, &in_left, &next, &room);
      out.append(buffer, static_cast<std::size_t>(next - buffer));
      if (result != static_cast<std::size_t>(-1) || errno == E2BIG) continue;
      // EILSEQ, or EINVAL for a sequence cut short at the end of the input.
      const std::size_t consumed = static_cast<std::size_t>(in - input.data());
      const std::size_t skip = on_error(input, consumed, out);
      in += skip;
      in_left -= skip;
    }
    char* next = buffer;
    std::size_t room = sizeof buffer;
    iconv(handle_, nullptr, nullptr, &next, &room);  // back to the initial state
    out.append(buffer, static_cast<std::size_t>(next - buffer));
  }

 private:
  iconv_t handle_;
};

class IconvCodePage final : public CodePage {
 public:
  IconvCodePage(std::string name, const std::string& iconv_name)
      : name_(std::move(name)), to_(iconv_name, "UTF-8"), from_("UTF-8", iconv_name) {}

  bool valid() const { return to_.valid() && from_.valid(); }

  std::string name() const override { return name_; }

  void encode(std::string_view text, std::string& out) const override {
    to_.convert(text, out, [](std::string_view input, std::size_t at, std::string& into) {
      const Utf8Character character = decode_utf8(input, at);
      into.append(character.valid ? utf16_units(character.value) : 1, '?');
      return character.bytes;
    });
  }

  void decode(std::string_view bytes, std::string& out) const override {
    from_.convert(bytes, out, [](std::string_view, std::size_t, std::string& into) {
      append_utf8(into, kReplacementCharacter);
      return std::size_t{1};
    });
  }

 private:
  std::string name_;
  IconvHandle to_;
  IconvHandle from_;
};

}  // namespace

std::string default_code_page_name() {
  return "windows-1252";
}

std::unique_ptr<CodePage> code_page_named(std::string_view name) {
  const std::optional<unsigned> number = code_page_number(name);
  if (number == 65001u) return std::make_unique<Utf8CodePage>();
  // iconv knows the numbered code pages as "CPnnnn"; any other name goes as given.
  const std::string display = number ? code_page_name(*number) : std::string(name);
  const std::string iconv_name = number ? "CP" + std::to_string(*number) : std::string(name);
  auto code_page = std::make_unique<IconvCodePage>(display, iconv_name);
  if (!code_page->valid()) return nullptr;
  return code_page;
}

}  // namespace zorvat::cli
