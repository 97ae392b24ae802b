// What the tests expect of a raised error: the error a call raised, or its number,
// source and description checked at once. A call that raises nothing fails the test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "zorvat/error.h"

namespace zorvat::testing_support {

// Runs `body`, which must raise; returns the error (an empty one, after a test
// failure, when it raised none).
template <class Body>
Error raised_by(Body&& body) {
  try {
    body();
  } catch (const Error& error) {
    return error;
  }
  ADD_FAILURE() << "no error raised";
  return Error(0, "", "");
}

// Expects `body` to raise `number` with `description` from `source`.
template <class Body>
void expect_error(Body&& body, long number, std::string_view source, std::string_view description) {
  const Error error = raised_by(std::forward<Body>(body));
  EXPECT_EQ(error.number(), number);
  EXPECT_EQ(error.source(), source);
  EXPECT_EQ(error.description(), description);
}

}  // namespace zorvat::testing_support
