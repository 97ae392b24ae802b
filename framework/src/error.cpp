#include "zorvat/error.h"

namespace zorvat {

std::string_view runtime_error_text(long number) {
  switch (number) {
    case rt::kInvalidProcedureCall:
      return "Invalid procedure call or argument";
    case rt::kOverflow:
      return "Overflow";
    case rt::kOutOfMemory:
      return "Out of memory";
    case rt::kSubscriptOutOfRange:
      return "Subscript out of range";
    case rt::kDivisionByZero:
      return "Division by zero";
    case rt::kTypeMismatch:
      return "Type mismatch";
    case rt::kInternalError:
      return "Internal error";
    case rt::kBadFileNameOrNumber:
      return "Bad file name or number";
    case rt::kFileNotFound:
      return "File not found";
    case rt::kDiskFull:
      return "Disk full";
    case rt::kPermissionDenied:
      return "Permission denied";
    case rt::kPathFileAccessError:
      return "Path/File access error";
    case rt::kPathNotFound:
      return "Path not found";
    case rt::kDeviceIoError:
      return "Device I/O error";
    case rt::kTooManyFiles:
      return "Too many files";
    case rt::kInvalidUseOfNull:
      return "Invalid use of Null";
    case rt::kObjectDoesntSupport:
      return "Object doesn't support this property or method";
    default:
      return "Application-defined or object-defined error";
  }
}

Error::Error(long number, std::string source, std::string description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {
  trail_.push_back(source_);
}

void Error::reraise_as(std::string_view source) {
  source_ = std::string(source);
  if (trail_.empty() || trail_.back() != source_) trail_.push_back(source_);
}

void raise_runtime(long number) {
  throw Error(number, std::string(kComponentSource), std::string(runtime_error_text(number)));
}

void raise(long number, std::string_view source, std::string_view description) {
  throw Error(number, std::string(source), std::string(description));
}

}  // namespace zorvat
