#pragma once

#include "calculator/macro_table.h"
#include "calculator/object_table.h"
#include "calculator/parsed_text.h"
#include "variant/value/limits.h"

#include <boost/random/mersenne_twister.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace corvath::calculator {

// What one evaluation may take. Texts are untrusted: where one asks for more, an exception says so.

/// Deepest evaluation of nodes, objects and macros inside each other; a level takes less than 1 KiB
/// of stack.
constexpr int kMaxDepth = 2000;
/// Most macro calls inside each other.
constexpr int kMaxMacroDepth = 100;
/// Most nodes that one call evaluates, objects' expressions included; kEntriesPerStep numbers of a
/// value, or multiplications of matrices, count as a node. Takes some seconds.
constexpr std::uint64_t kMaxSteps = std::uint64_t{1} << 24;
constexpr std::size_t kEntriesPerStep = 256;

/// What a calculator holds between evaluations.
struct Workspace {
  ObjectTable objects;
  MacroTable macros;
  ParseCache texts{objects, macros};

  /// Counts work against the limit. @throws CCalculatorException  there is too much
  void CountSteps(std::uint64_t count);

  /// The tree of an object's expression.
  /// @throws CCalculatorException  as ParseCache::Parse()
  const ParsedText& GetText(Object& object);

  /// Forgets the trees of all texts where they take half of what they may, so that the next
  /// evaluation finds room. Nothing may hold a tree, or the entry of a name that is not known.
  void MakeRoom();

  /// The random numbers of this calculator, seeded at the first call.
  boost::random::mt19937& GetGenerator();
  bool HasGenerator() const { return generator_.has_value(); }

  // The evaluation under way.
  int depth = 0;
  int macro_depth = 0;
  std::uint64_t steps = 0;
  /// Numbers of intermediate values that wait for others, and of the values that texts assigned.
  std::size_t held_entries = 0;
  std::size_t assigned_entries = 0;
  std::size_t max_entries = math::kMaxEntries;  ///< most of each of the two
  std::uint64_t max_steps = kMaxSteps;

 private:
  std::optional<boost::random::mt19937> generator_;
};

}  // namespace corvath::calculator
