// Raised errors: the automation error every public member hands to the host.
//
// A class never returns error codes. Each procedure runs under a handler that
// raises the same number and description again with its own source
// ("zorvat.<Class>.<Procedure>"), so the host finally sees the source of the
// public member it called. The sources an error passed through are kept, innermost
// first, so a log or a test can tell where it started.
#pragma once

#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zorvat {

// The classic run-time error numbers the classes raise.
namespace rt {
inline constexpr long kInvalidProcedureCall = 5;
inline constexpr long kOverflow = 6;
inline constexpr long kOutOfMemory = 7;
inline constexpr long kSubscriptOutOfRange = 9;
inline constexpr long kDivisionByZero = 11;
inline constexpr long kTypeMismatch = 13;
inline constexpr long kInternalError = 51;
inline constexpr long kBadFileNameOrNumber = 52;
inline constexpr long kFileNotFound = 53;
inline constexpr long kDiskFull = 61;
inline constexpr long kPermissionDenied = 70;
inline constexpr long kPathFileAccessError = 75;
inline constexpr long kPathNotFound = 76;
inline constexpr long kDeviceIoError = 57;
inline constexpr long kTooManyFiles = 67;
inline constexpr long kInvalidUseOfNull = 94;
inline constexpr long kObjectDoesntSupport = 438;
}  // namespace rt

// The classic text of a run-time error number ("Overflow" for 6); a generic text for
// numbers without one.
std::string_view runtime_error_text(long number);

// The source a run-time error carries before any handler has re-raised it.
inline constexpr std::string_view kComponentSource = "zorvat";

class Error : public std::exception {
 public:
  Error(long number, std::string source, std::string description);

  long number() const noexcept { return number_; }
  const std::string& source() const noexcept { return source_; }
  const std::string& description() const noexcept { return description_; }
  // Every source the error carried, the first one it was raised with first.
  const std::vector<std::string>& trail() const noexcept { return trail_; }

  // What a procedure's error handler does: keep number and description, take the
  // procedure's source.
  void reraise_as(std::string_view source);

  const char* what() const noexcept override { return description_.c_str(); }

 private:
  long number_;
  std::string source_;
  std::string description_;
  std::vector<std::string> trail_;
};

// Raises a run-time error with its classic text and the component's source.
[[noreturn]] void raise_runtime(long number);
// Raises an error with an explicit description and source.
[[noreturn]] void raise(long number, std::string_view source, std::string_view description);

// Runs `body` under a procedure's error handler: whatever leaves it leaves as an
// Error whose source is `source`. Standard-library failures become the run-time
// errors they stand for, so no other exception type ever reaches a host.
template <class Body>
decltype(auto) guarded(std::string_view source, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (Error& error) {
    error.reraise_as(source);
    throw;
  } catch (const std::bad_alloc&) {
    throw Error(rt::kOutOfMemory, std::string(source),
                std::string(runtime_error_text(rt::kOutOfMemory)));
  } catch (const std::exception& other) {
    throw Error(rt::kInternalError, std::string(source),
                std::string(runtime_error_text(rt::kInternalError)) + ": " + other.what());
  }
}

}  // namespace zorvat
