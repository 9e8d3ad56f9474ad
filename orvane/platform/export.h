#pragma once

/// Marks what a shared library of this project shows to its users; everything else stays hidden.
#define ORVANE_API __attribute__((visibility("default")))
