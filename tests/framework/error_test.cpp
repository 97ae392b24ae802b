#include "zorvat/error.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace zorvat {
namespace {

TEST(RuntimeErrors, CarryTheirClassicTexts) {
  EXPECT_EQ(runtime_error_text(5), "Invalid procedure call or argument");
  EXPECT_EQ(runtime_error_text(6), "Overflow");
  EXPECT_EQ(runtime_error_text(9), "Subscript out of range");
  EXPECT_EQ(runtime_error_text(13), "Type mismatch");
  EXPECT_EQ(runtime_error_text(438), "Object doesn't support this property or method");
  EXPECT_EQ(runtime_error_text(52), "Bad file name or number");
  EXPECT_EQ(runtime_error_text(53), "File not found");
  EXPECT_EQ(runtime_error_text(61), "Disk full");
  EXPECT_EQ(runtime_error_text(70), "Permission denied");
  EXPECT_EQ(runtime_error_text(75), "Path/File access error");
  EXPECT_EQ(runtime_error_text(76), "Path not found");
}

TEST(RaisedErrors, ReachTheCallerWithThePublicMembersSource) {
  // A private procedure's failure passes through its own handler and then its
  // caller's: the host sees the public member, the trail shows the way.
  try {
    guarded("zorvat.Generic.Execute", [] {
      guarded("zorvat.Generic.EmployeeRecord", [] { raise_runtime(rt::kObjectDoesntSupport); });
    });
    FAIL() << "nothing raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 438);
    EXPECT_EQ(error.description(), "Object doesn't support this property or method");
    EXPECT_EQ(error.source(), "zorvat.Generic.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.Generic.EmployeeRecord",
                                                       "zorvat.Generic.Execute"}));
  }
}

TEST(RaisedErrors, KeepNumberAndDescriptionOfValidationErrors) {
  try {
    guarded("zorvat.ADP7.ValidateSetupData", [] {
      raise(1002, "zorvat.ADP7.ValidateSetupData",
            "Batch Sequence Number must be between 0 and 99");
    });
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 1002);
    EXPECT_EQ(error.source(), "zorvat.ADP7.ValidateSetupData");
    EXPECT_EQ(error.trail().size(), 1u);
  }
}

TEST(RaisedErrors, GuardedReturnsTheBodysValue) {
  EXPECT_EQ(guarded("zorvat.X.Y", [] { return 42; }), 42);
}

TEST(RaisedErrors, LibraryFailuresBecomeRuntimeErrors) {
  try {
    guarded("zorvat.Generic.Execute", []() -> int { throw std::bad_alloc(); });
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kOutOfMemory);
    EXPECT_EQ(error.source(), "zorvat.Generic.Execute");
  }
  try {
    guarded("zorvat.Generic.Execute", []() -> int { throw std::runtime_error("boom"); });
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kInternalError);
    EXPECT_EQ(error.description(), "Internal error: boom");
  }
}

}  // namespace
}  // namespace zorvat
