#pragma once

#include <cstddef>
#include <vector>

namespace corvath::calculator {

/// An order of 0 ... n-1 in which each number comes after those that it refers to; numbers that do
/// not care keep their order. Of a cycle the smallest number comes first, the others as if nothing
/// referred to it.
///
/// Strongly connected components by R. Tarjan, "Depth-first search and linear graph algorithms",
/// SIAM J. Comput. 1 (1972), 146-160, without recursion: linear time. Cycles within cycles cost
/// their size again for each number taken out; where that would be often, their numbers just ascend.
///
/// @param references  of each number those that it refers to, ascending and each once; itself does
///                    not count
std::vector<std::size_t> OrderByReferences(const std::vector<std::vector<std::size_t>>& references);

}  // namespace corvath::calculator
