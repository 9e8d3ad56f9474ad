#pragma once

#include <CLI/CLI.hpp>

namespace BP::tool {

// Each function adds operations to the command: a subcommand with its options, and as its callback the work itself,
// which throws `std::runtime_error` with one line of text when it cannot be done.

/// `convolve`, `correlate` and `separable`.
void addConvolution(CLI::App& command);

/// `compare`.
void addCompare(CLI::App& command);

/// `kernel`.
void addKernel(CLI::App& command);

/// `chart`.
void addChart(CLI::App& command);

/// `median`.
void addMedian(CLI::App& command);

/// `plan`.
void addPlan(CLI::App& command);

/// `match`.
void addMatch(CLI::App& command);

/// `patch`.
void addPatch(CLI::App& command);

}  // namespace BP::tool
