#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "orvane/core/error.h"

namespace orvane::testing {

// Runs a call that must raise orvane::Error and returns what it raised.
inline ::testing::AssertionResult RaisesError(const std::function<void()>& call,
                                              std::int32_t number, const std::string& source,
                                              const std::string& description = {}) {
  try {
    call();
  } catch (const Error& e) {
    if (e.Number() != number || e.Source() != source ||
        (!description.empty() && e.Description() != description)) {
      return ::testing::AssertionFailure()
             << "raised error " << e.Number() << " from \"" << e.Source() << "\": \""
             << e.Description() << "\"";
    }
    return ::testing::AssertionSuccess();
  } catch (const std::exception& e) {
    return ::testing::AssertionFailure() << "raised a foreign exception: " << e.what();
  }
  return ::testing::AssertionFailure() << "raised nothing";
}

}  // namespace orvane::testing

// EXPECT_ORVANE_ERROR(statement, number, source[, description])
#define EXPECT_ORVANE_ERROR(statement, ...) \
  EXPECT_TRUE(::orvane::testing::RaisesError([&] { statement; }, __VA_ARGS__))
