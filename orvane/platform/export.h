#pragma once

/// Marks a class or function that a shared library of this project exports. Everything else stays hidden.
#define ORVANE_API __attribute__((visibility("default")))
