#include "doe/sobol.h"

#include "doe/doe.h"
#include "doe/scrambled_sobol.h"
#include "support/testing.h"

namespace {

using namespace corvath::math;

DirectionNumbers Directions(std::size_t dimension) {
  const SobolTable& table = SobolTable::Get(dimension + 1);
  DirectionNumbers v{};
  std::uint32_t before = 0;
  for (int bit = 0; bit < kSobolBits; ++bit) {
    v[static_cast<std::size_t>(bit)] = table.Row(bit)[dimension] ^ before;
    before = table.Row(bit)[dimension];
  }
  return v;
}

TEST(PrimitivePolynomials, AreAllThereAre) {
  // phi(2^s - 1) / s of degree s.
  const int counts[] = {0, 1, 1, 2, 2, 6, 6, 18, 16, 48, 60, 176, 144, 630};
  BinaryPolynomial p = 2;
  for (int degree = 1; degree <= 13; ++degree) {
    int count = 0;
    while (Degree(NextPrimitive(p)) == degree) {
      p = NextPrimitive(p);
      ++count;
    }
    EXPECT_EQ(count, counts[degree]) << degree;
  }
  // x^4 + x^3 + x^2 + x + 1 is irreducible, but x has the order 5; x^31 + x^3 + 1 is primitive.
  EXPECT_FALSE(IsPrimitive(0x1f));
  EXPECT_TRUE(IsPrimitive(0x80000009U));
}

TEST(SobolTable, HasTheGivenNumbers) {
  const SobolTable& table = SobolTable::Get(kMaxSobolDimensions);
  const std::uint32_t second[] = {0x60000000, 0x20000000, 0x60000000,
                                  0x60000000, 0x60000000, 0x20000000};
  const std::uint32_t third[] = {0x70000000, 0x70000000, 0x10000000,
                                 0x50000000, 0x50000000, 0x50000000};
  for (int k = 0; k < 6; ++k) {
    EXPECT_EQ(table.Row(1)[k], second[k]) << k;
    EXPECT_EQ(table.Row(2)[k], third[k]) << k;
  }
  for (int bit = 0; bit < kSobolBits; ++bit)
    EXPECT_EQ(table.Row(bit)[0], 0x7fffffffU ^ (0x3fffffffU >> bit)) << bit;
  for (std::uint64_t k = 0; k < kMaxSobolDimensions; ++k) {
    EXPECT_EQ(table.Row(0)[k], 0x40000000U);
    const DirectionNumbers v = Directions(k);
    for (int bit = 0; bit < kSobolBits; ++bit) {
      ASSERT_LT(v[static_cast<std::size_t>(bit)], 0x80000000U);
      // Odd as a multiple of 2^-(bit + 1): each dimension by itself is a (0, 1)-sequence.
      ASSERT_EQ(__builtin_ctz(v[static_cast<std::size_t>(bit)]), kSobolBits - 1 - bit) << k;
    }
  }
}

TEST(SobolTable, DirectionNumbersFollowThePublishedRecurrence) {
  // P. Bratley, B. L. Fox 1988: x^3 + x + 1 and m = 1, 3, 7 give 5, 7, 43 next.
  const DirectionNumbers v = MakeDirectionNumbers(0xb, {1, 3, 7});
  const std::uint32_t m[] = {1, 3, 7, 5, 7, 43};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(v[static_cast<std::size_t>(i)], m[i] << (30 - i)) << i;
}

TEST(SobolTable, HasPropertyA) {
  // That is, of 2^d points one lies in each half of halves: the leading bits are independent. By
  // elimination on the table, as far as its bits go.
  const SobolTable& table = SobolTable::Get(kSobolBits);
  std::vector<std::uint32_t> rows;
  for (int k = 0; k < kSobolBits; ++k) {
    std::uint32_t row = 0;
    for (int bit = 0; bit < kSobolBits; ++bit) row |= (table.Row(bit)[k] >> 30) << bit;
    for (int i = 0; i < k; ++i)
      if ((row >> i & 1U) != 0) row ^= rows[static_cast<std::size_t>(i)];
    ASSERT_EQ(__builtin_ctz(row), k);
    rows.push_back(row);
  }
  // Beyond them the table itself counts.
  EXPECT_EQ(SobolTable::Get(PropertyA::kMaxDimensions).NumWithPropertyA(),
            PropertyA::kMaxDimensions);
}

TEST(Sobol, StepsAndJumpsAgree) {
  for (const std::uint64_t start : {0ULL, 1000ULL, 0x7fffff00ULL})
    for (std::uint64_t i = start; i < start + 200; ++i) {
      std::uint64_t gray = i ^ i >> 1;
      std::uint32_t expected = 0;
      const std::uint64_t d = i % 50 == 7 ? 70 : 64;  // a step to more dimensions, too
      for (int bit = 0; bit < kSobolBits; ++bit)
        if ((gray >> bit & 1U) != 0) expected ^= SobolTable::Get(70).Row(bit)[d - 1];
      EXPECT_EQ(SobolPoint(i, d).at(d - 1), expected) << i;
    }
}

TEST(Sobol, BuildContinuesBehindTheDesigns) {
  DOE whole(40, 1);
  whole.Build(kSobolSequence, 50, false);
  DOE parts(40, 2);
  parts.Build(kSobolSequence, 20, false);
  SobolPoint(12345, 3);  // somebody else's
  parts.Build(kSobolSequence, 30, true);
  EXPECT_EQ(whole.GetDesigns(), parts.GetDesigns());
  parts.Build(kPlainMonteCarlo, 1, false);  // which the sequence drew nothing for
  DOE fresh(40, 2);
  fresh.Build(kPlainMonteCarlo, 1, false);
  EXPECT_EQ(parts.GetDesigns(), fresh.GetDesigns());
  for (const double x : whole.GetDesigns().front()) {
    EXPECT_EQ(x, 2.0 * 1073741824.0 * 4.656612873077e-10 - 1.0);
    EXPECT_NEAR(x, -8.43e-14, 1e-15);
  }
}

TEST(ScrambledSobol, KeepsTheEvennessAndIsUnbiased) {
  // Of 2^10 points each of 1024 equal intervals of a dimension, and each of 32 x 32 cells of the
  // first two dimensions, has one.
  constexpr Eigen::Index kN = 1024;
  const Eigen::MatrixXd points = ScrambledSobol(5, 3).GetPoints(3 * kN, kN);
  EXPECT_EQ(points.bottomRows(24), ScrambledSobol(5, 3).GetPoints(4 * kN - 24, 24));
  for (Eigen::Index k = 0; k < 5; ++k) {
    std::set<int> intervals;
    for (const double x : points.col(k)) intervals.insert(static_cast<int>(x * kN));
    EXPECT_EQ(intervals.size(), 1024U) << k;
  }
  std::set<int> cells;
  for (Eigen::Index i = 0; i < kN; ++i)
    cells.insert(static_cast<int>(points(i, 0) * 32) * 32 + static_cast<int>(points(i, 1) * 32));
  EXPECT_EQ(cells.size(), 1024U);

  // The integral of the product of e^x: with independent points its standard error would be 1.6e-2
  // of it, at nets it is far less; the mean over 64 seeds has an eighth of the spread of one.
  const double exact = std::pow(std::exp(1.0) - 1.0, 3);
  double sum = 0.0;
  double squares = 0.0;
  for (std::uint32_t seed = 0; seed < 64; ++seed) {
    const double error =
        ScrambledSobol(3, seed).GetPoints(0, kN).rowwise().sum().array().exp().mean() / exact - 1.0;
    sum += error;
    squares += error * error;
  }
  const double spread = std::sqrt(squares / 64.0);
  EXPECT_LT(spread, 2e-3);
  EXPECT_LT(std::abs(sum / 64.0), 4.0 * spread / 8.0);
}

TEST(Sobol, RefusesWhatTheTableDoesNotReach) {
  const char* const message = "Sobol: Error calculating single point.";
  EXPECT_ERROR(std::logic_error, message, SobolPoint(0x80000000U, 2));
  EXPECT_ERROR(std::logic_error, message, SobolPoint(1, 0));
  EXPECT_ERROR(std::logic_error, message, SobolPoint(1, 8193));
  EXPECT_EQ(SobolPoint(0x7fffffff, 8192).size(), 8192U);
  DOE doe(8193, 1);
  EXPECT_ERROR(std::logic_error, message, doe.Build(kSobolSequence, 15, false));
}

}  // namespace
