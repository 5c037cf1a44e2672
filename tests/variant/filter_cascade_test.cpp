#include "variant/signals/filter_cascade.h"

#include "support/values.h"
#include "variant/signals/filters.h"

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

TEST(FilterCascade, IsTheDifferenceEquationSectionBySection) {
  // Plain complex arithmetic, one section after the other over the whole channel.
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> uniform(-0.4, 0.4);
  // Lengths on both sides of the samples that the last of some sections lags behind the first.
  const std::pair<std::size_t, std::size_t> sizes[] = {{1, 40}, {2, 1}, {3, 3}, {4, 1},
                                                       {4, 6},  {4, 7}, {5, 2}, {7, 40}};
  for (const auto& [sections, n] : sizes)
    for (const std::size_t columns : {3u, 5u})
      for (const bool complex : {false, true})
        for (const int start : {kStartZero, kStartConstant}) {
          Value::Matrix b(sections, columns), a(sections, columns);
          for (auto* m : {&b, &a})
            for (Complex& z : m->data())
              z = Complex(uniform(engine), complex ? uniform(engine) : 0);
          for (std::size_t r = 0; r < sections; ++r) a(r, 0) = r == 0 ? Complex(1) : Complex(2.5);
          std::vector<Complex> x(n);
          for (Complex& z : x) z = uniform(engine);

          std::vector<Complex> w(columns - 1, start == kStartConstant ? x[0] : 0);
          w.insert(w.end(), x.begin(), x.end());
          for (std::size_t r = 0; r < sections; ++r) {
            std::vector<Complex> y = w;
            for (std::size_t k = columns - 1; k < w.size(); ++k) {
              y[k] = b(r, 0) / a(r, 0) * w[k];
              for (std::size_t j = 1; j < columns; ++j)
                y[k] += b(r, j) / a(r, 0) * w[k - j] - a(r, j) / a(r, 0) * y[k - j];
            }
            w = y;
          }
          std::vector<Complex> t(n);
          for (std::size_t i = 0; i < n; ++i) t[i] = static_cast<double>(i);
          Value r;
          fn::filter(r, Sig(t, {x, x}), Value(b), Value(a), start);
          ASSERT_TRUE(r.IsSignal());
          for (std::size_t i = 0; i < n; ++i) {
            EXPECT_NEAR(std::abs(r.GetMatrix()(0, i) - w[i + columns - 1]), 0, 1e-14);
            EXPECT_EQ(r.GetMatrix()(0, i), r.GetMatrix()(1, i));
          }
        }
}

}  // namespace
}  // namespace corvath::math
