#pragma once

#include <cstdint>
#include <vector>

namespace corvath::math {

/// Rows of BoxBehnken without extra centre points; 2^64 - 1 for more than 64 bits. Needs d >= 3.
std::uint64_t CountBoxBehnken(std::uint64_t d);

/// The designs of G. E. P. Box and D. W. Behnken, "Some new three level designs for the study of
/// quantitative variables", Technometrics 2, 1960, pp. 455-475: blocks of a few factors, each with
/// all signs (for 11 factors the half whose product is positive), the other factors in the middle, and at the end the
/// centre. For a number of factors without published blocks, the blocks are all pairs.
///
/// One row per run; levels -1, 0 and 1 as 1, 2 and 3. With `centre_points` the centre comes as
/// often as the designs recommend, else once.
std::vector<std::vector<std::uint32_t>> BoxBehnken(std::uint64_t d, bool centre_points);

}  // namespace corvath::math
