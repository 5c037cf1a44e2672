// Searches the initial numbers of src/doe/sobol_initial_numbers.inc and prints them.
//
// Dimensions 0 to 4, and the first three numbers of dimension 5, are given. Each further dimension
// gets the best of many random candidates with which the dimensions so far have property A: the one
// with the smallest sum of PairCost with all dimensions before it. The second number is 1 for as
// many of the 50 dimensions as it is 3: four points of a pair fall into the four quarters of the
// square if and only if these numbers differ, so no choice makes more pairs do so (625 of 1225).
//
// Its argument is the number of candidates; the file holds what 30000 give, in about a minute.

#include "doe/sobol_table.h"
#include "sobol_quality.h"

#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

using namespace corvath::math;

constexpr int kDimensions = 50;

struct Candidate {
  std::vector<std::uint32_t> initial;
  DirectionNumbers v{};
  double cost = 0.0;
};

}  // namespace

int main(int argc, char** argv) {
  const int tries = argc > 1 ? std::atoi(argv[1]) : 2000;
  const std::vector<std::vector<std::uint32_t>> given = {
      {1}, {1, 1}, {1, 1, 3}, {1, 1, 3}, {1, 3, 7}};
  std::mt19937_64 random(1);
  PropertyA property_a;
  property_a.Add(0, {});
  std::vector<DirectionNumbers> chosen(1);
  for (int i = 0; i < kSobolBits; ++i)
    chosen[0][static_cast<std::size_t>(i)] = 1U << (kSobolBits - 1 - i);
  int num_ones = 1;
  int num_threes = 0;
  BinaryPolynomial polynomial = 3;
  for (int k = 1; k < kDimensions; ++k) {
    if (k > 1) polynomial = NextPrimitive(polynomial);
    const int degree = Degree(polynomial);
    Candidate best;
    for (int i = 0; i < tries; ++i) {
      Candidate candidate;
      for (int j = 1; j <= degree; ++j)
        candidate.initial.push_back((static_cast<std::uint32_t>(random()) & ((1U << j) - 1)) | 1U);
      if (k <= 5) {
        const auto& numbers = given[static_cast<std::size_t>(k - 1)];
        std::copy(numbers.begin(), numbers.end(), candidate.initial.begin());
      } else if (num_ones != num_threes) {
        candidate.initial[1] = num_ones < num_threes ? 1 : 3;
      }
      candidate.v = MakeDirectionNumbers(polynomial, candidate.initial);
      PropertyA with = property_a;
      if (!with.Add(polynomial, candidate.initial)) continue;
      for (const auto& other : chosen) {
        candidate.cost += sobol::PairCost(other, candidate.v);
        if (!best.initial.empty() && candidate.cost >= best.cost) break;
      }
      if (best.initial.empty() || candidate.cost < best.cost) best = candidate;
    }
    if (best.initial.empty()) return std::fprintf(stderr, "dimension %d: none found\n", k), 1;
    property_a.Add(polynomial, best.initial);
    chosen.push_back(best.v);
    if (k > 1)
      (best.initial[1] == 1 ? num_ones : num_threes) += 1;
    else
      ++num_threes;  // (1, 3, 5, ...) follows from the polynomial
    std::printf("{");
    for (std::size_t j = 0; j < best.initial.size(); ++j)
      std::printf(j == 0 ? "%u" : ", %u", best.initial[j]);
    std::printf("},  // %d\n", k);
  }
  int worst = 0;
  double total = 0.0;
  for (std::size_t i = 0; i < chosen.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      total += sobol::PairCost(chosen[i], chosen[j]);
      for (int m = 2; m <= 16; ++m)
        worst = std::max(worst, sobol::PairQuality(chosen[i], chosen[j], m));
    }
  std::fprintf(stderr, "total cost %g, largest t %d\n", total, worst);
  return 0;
}
