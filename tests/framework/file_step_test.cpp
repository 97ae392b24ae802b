#include "zorvat/file_step.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>

#include "zorvat/error.h"
#include "zorvat/unicode.h"

namespace zorvat {
namespace {

// A file system in memory that can be made to fail at any step of the file step.
class FakeFileSystem final : public FileSystem {
 public:
  enum class Step { None, Create, Write, Finish, Replace };
  Step fail_at = Step::None;
  long error = rt::kDiskFull;

  std::map<std::string, std::string> files;
  std::map<std::string, Kind> kinds;  // paths that are not plain files
  std::vector<std::string> removed;
  int temporaries = 0;

  Kind kind(const std::string& path) override {
    if (auto special = kinds.find(path); special != kinds.end()) return special->second;
    return files.count(path) ? Kind::Regular : Kind::Missing;
  }
  std::unique_ptr<OutputStream> create_beside(const std::string& target,
                                              std::string& temporary) override {
    if (fail_at == Step::Create) raise_runtime(error);
    temporary = target + ".tmp" + std::to_string(++temporaries);
    files[temporary] = "";
    return std::make_unique<Stream>(*this, temporary);
  }
  std::unique_ptr<OutputStream> open_for_output(const std::string& path) override {
    return std::make_unique<Stream>(*this, path);
  }
  void replace(const std::string& temporary, const std::string& target) override {
    if (fail_at == Step::Replace) raise_runtime(error);
    files[target] = files.at(temporary);
    files.erase(temporary);
  }
  void remove(const std::string& path) noexcept override {
    removed.push_back(path);
    files.erase(path);
  }

 private:
  class Stream final : public OutputStream {
   public:
    Stream(FakeFileSystem& owner, std::string path) : owner_(owner), path_(std::move(path)) {}
    void write(std::string_view bytes) override {
      if (owner_.fail_at == Step::Write) raise_runtime(owner_.error);
      owner_.files[path_] += bytes;
    }
    void finish() override {
      if (owner_.fail_at == Step::Finish) raise_runtime(owner_.error);
    }

   private:
    FakeFileSystem& owner_;
    std::string path_;
  };
};

long error_of(SafeOutputFiles& files, const std::string& path, std::string_view text) {
  try {
    files.write_file(path, text);
  } catch (const Error& error) {
    return error.number();
  }
  return 0;
}

TEST(FileStep, ReplacesTheTargetThroughATemporaryFile) {
  FakeFileSystem fs;
  fs.files["out.tab"] = "previous";
  SafeOutputFiles files(fs, utf8_code_page());
  files.write_file("out.tab", "new text");
  EXPECT_EQ(fs.files, (std::map<std::string, std::string>{{"out.tab", "new text"}}));
  EXPECT_EQ(fs.temporaries, 1);
}

TEST(FileStep, CreatesAMissingTarget) {
  FakeFileSystem fs;
  SafeOutputFiles files(fs, utf8_code_page());
  files.write_file("new.tab", "");
  EXPECT_EQ(fs.files, (std::map<std::string, std::string>{{"new.tab", ""}}));
}

TEST(FileStep, AFailureAtAnyStepLeavesThePreviousFileAndNoTemporaryFile) {
  for (auto step :
       {FakeFileSystem::Step::Write, FakeFileSystem::Step::Finish, FakeFileSystem::Step::Replace}) {
    FakeFileSystem fs;
    fs.files["out.tab"] = "previous";
    fs.fail_at = step;
    SafeOutputFiles files(fs, utf8_code_page());
    EXPECT_EQ(error_of(files, "out.tab", "new text"), rt::kDiskFull);
    EXPECT_EQ(fs.files, (std::map<std::string, std::string>{{"out.tab", "previous"}}));
    EXPECT_EQ(fs.removed, std::vector<std::string>{"out.tab.tmp1"});
  }
}

TEST(FileStep, AFolderThatCannotTakeTheTemporaryFileRaisesItsError) {
  FakeFileSystem fs;
  fs.fail_at = FakeFileSystem::Step::Create;
  fs.error = rt::kPermissionDenied;
  SafeOutputFiles files(fs, utf8_code_page());
  EXPECT_EQ(error_of(files, "locked/out.tab", "x"), rt::kPermissionDenied);
  EXPECT_TRUE(fs.files.empty());
}

TEST(FileStep, ADirectoryIsNoFile) {
  FakeFileSystem fs;
  fs.kinds["folder"] = FileSystem::Kind::Directory;
  SafeOutputFiles files(fs, utf8_code_page());
  EXPECT_EQ(error_of(files, "folder", "x"), rt::kPathFileAccessError);
  EXPECT_EQ(fs.temporaries, 0);
}

TEST(FileStep, DevicesAreWrittenInPlace) {
  FakeFileSystem fs;
  fs.kinds["/dev/lp0"] = FileSystem::Kind::Other;
  SafeOutputFiles files(fs, utf8_code_page());
  files.write_file("/dev/lp0", "to the printer");
  EXPECT_EQ(fs.files["/dev/lp0"], "to the printer");
  EXPECT_EQ(fs.temporaries, 0);
}

TEST(FileStep, AnEmptyNameIsABadFileName) {
  FakeFileSystem fs;
  SafeOutputFiles files(fs, utf8_code_page());
  EXPECT_EQ(error_of(files, "", "x"), rt::kBadFileNameOrNumber);
}

TEST(FileErrors, PosixCodesMapToTheClassicErrors) {
  EXPECT_EQ(file_error_from_posix(ENOENT), 76);
  EXPECT_EQ(file_error_from_posix(ENOTDIR), 76);
  EXPECT_EQ(file_error_from_posix(EACCES), 70);
  EXPECT_EQ(file_error_from_posix(EPERM), 70);
  EXPECT_EQ(file_error_from_posix(EROFS), 70);
  EXPECT_EQ(file_error_from_posix(ENOSPC), 61);
  EXPECT_EQ(file_error_from_posix(EFBIG), 61);
  EXPECT_EQ(file_error_from_posix(ENAMETOOLONG), 52);
  EXPECT_EQ(file_error_from_posix(EISDIR), 75);
  EXPECT_EQ(file_error_from_posix(EXDEV), 75);
  EXPECT_EQ(file_error_from_posix(EIO), 57);
  EXPECT_EQ(file_error_from_posix(EMFILE), 67);
}

TEST(FileErrors, Win32CodesMapToTheClassicErrors) {
  EXPECT_EQ(file_error_from_win32(2), 53);    // ERROR_FILE_NOT_FOUND
  EXPECT_EQ(file_error_from_win32(3), 76);    // ERROR_PATH_NOT_FOUND
  EXPECT_EQ(file_error_from_win32(5), 70);    // ERROR_ACCESS_DENIED
  EXPECT_EQ(file_error_from_win32(32), 70);   // ERROR_SHARING_VIOLATION
  EXPECT_EQ(file_error_from_win32(112), 61);  // ERROR_DISK_FULL
  EXPECT_EQ(file_error_from_win32(123), 52);  // ERROR_INVALID_NAME
  EXPECT_EQ(file_error_from_win32(206), 52);  // ERROR_FILENAME_EXCED_RANGE
  EXPECT_EQ(file_error_from_win32(267), 75);  // ERROR_DIRECTORY
  EXPECT_EQ(runtime_error_text(57), "Device I/O error");
  EXPECT_EQ(runtime_error_text(67), "Too many files");
}

// ISO 8859-1 for the tests: a letter up to U+00FF is its own byte, any other is "?";
// it counts the pieces it is handed.
class Latin1 final : public CodePage {
 public:
  mutable int pieces = 0;
  std::string name() const override { return "iso-8859-1"; }
  void encode(std::string_view text, std::string& out) const override {
    ++pieces;
    for (std::size_t at = 0; at < text.size();) {
      const Utf8Character character = decode_utf8(text, at);
      out += character.value < 0x100 ? static_cast<char>(character.value) : '?';
      at += character.bytes;
    }
  }
  void decode(std::string_view bytes, std::string& out) const override {
    for (char byte : bytes) append_utf8(out, static_cast<unsigned char>(byte));
  }
};

// A code page that does not keep ASCII (two bytes a letter, as UTF-16 would write it).
class TwoBytesALetter final : public CodePage {
 public:
  std::string name() const override { return "two-bytes"; }
  void encode(std::string_view text, std::string& out) const override {
    for (char c : text) (out += c) += '\0';
  }
  void decode(std::string_view bytes, std::string& out) const override {
    for (std::size_t i = 0; i < bytes.size(); i += 2) out += bytes[i];
  }
};

TEST(FileStepCodePage, WhetherACodePageKeepsAsciiIsTried) {
  EXPECT_TRUE(Latin1().keeps_ascii());
  EXPECT_FALSE(TwoBytesALetter().keeps_ascii());
  FakeFileSystem fs;
  const TwoBytesALetter two;
  SafeOutputFiles files(fs, two);
  files.write_file("out.tab", "AB");
  EXPECT_EQ(fs.files.at("out.tab"), std::string("A\0B\0", 4));
}

TEST(FileStepCodePage, TheFileHoldsTheTextInTheCodePage) {
  FakeFileSystem fs;
  const Latin1 latin1;
  SafeOutputFiles files(fs, latin1);
  files.write_file("out.tab",
                   "Jos\xC3\xA9 Pe\xC3\xB1"
                   "a,\xE7\x8E\x8B\r\n");  // José Peña,王
  EXPECT_EQ(fs.files.at("out.tab"),
            "Jos\xE9 Pe\xF1"
            "a,?\r\n");
}

TEST(FileStepCodePage, AsciiGoesAsItStandsWithoutAConversion) {
  FakeFileSystem fs;
  const Latin1 latin1;
  SafeOutputFiles files(fs, latin1);
  const int pieces_before = latin1.pieces;
  files.write_file("out.tab", "E100,000000042,01,8.00\r\n");
  EXPECT_EQ(fs.files.at("out.tab"), "E100,000000042,01,8.00\r\n");
  EXPECT_EQ(latin1.pieces - pieces_before, 1);  // keeps_ascii's one try, no conversion
}

TEST(FileStepCodePage, ALargeTextIsConvertedInPiecesThatNeverSplitALetter) {
  // "é" (two bytes) straddles every 1 MiB boundary when the text starts with one
  // ASCII byte; the file still holds one byte per letter.
  std::string text = "x";
  std::string expected = "x";
  while (text.size() < 3 * (std::size_t{1} << 20)) {
    text += "\xC3\xA9";
    expected += '\xE9';
  }
  FakeFileSystem fs;
  const Latin1 latin1;
  SafeOutputFiles files(fs, latin1);
  files.write_file("big.tab", text);
  EXPECT_EQ(fs.files.at("big.tab"), expected);
  EXPECT_GE(latin1.pieces, 3);
}

TEST(FileStepCodePage, Utf8IsWrittenUnchanged) {
  FakeFileSystem fs;
  SafeOutputFiles files(fs, utf8_code_page());
  files.write_file("out.tab",
                   "Gr\xC3\xA2"
                   "ce O\xE2\x80\x99Neil");
  EXPECT_EQ(fs.files.at("out.tab"),
            "Gr\xC3\xA2"
            "ce O\xE2\x80\x99Neil");
}

TEST(FileStepCodePage, ADeviceIsWrittenInTheCodePageToo) {
  FakeFileSystem fs;
  fs.kinds["/dev/lp0"] = FileSystem::Kind::Other;
  const Latin1 latin1;
  SafeOutputFiles files(fs, latin1);
  files.write_file("/dev/lp0", "M\xC3\xBCller");
  EXPECT_EQ(fs.files.at("/dev/lp0"), "M\xFCller");
}

}  // namespace
}  // namespace zorvat
