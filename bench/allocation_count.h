#pragma once

#include <cstdint>

/// Number of times that this program has asked for memory by `new`.
std::int64_t allocationCount();
