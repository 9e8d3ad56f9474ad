#pragma once

#include <gmock/gmock.h>

#include <stdexcept>

/// Expects `std::invalid_argument` with this very message from an expression.
#define EXPECT_REFUSAL(message, ...) \
  EXPECT_THAT(([&] { __VA_ARGS__; }), testing::ThrowsMessage<std::invalid_argument>(message))
