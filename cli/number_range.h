#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>

namespace cli {

/// For transform(): an option is a whole number in a range, which may be written as 1e5. A refusal
/// tells the range.
CLI::Validator WholeNumber(std::int64_t lowest, std::int64_t highest);

/// For check(): likewise any number; NaN is in no range.
CLI::Validator Number(double lowest, double highest);

/// For transform(): what a random number generator takes.
CLI::Validator Seed();

}  // namespace cli
