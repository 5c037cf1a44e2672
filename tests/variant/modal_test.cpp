#include "variant/signals/modal.h"

#include "support/values.h"

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

TEST(Modal, AssuranceIsOneForParallelVectorsOfAnyScale) {
  const Value a = Mat({{1, Complex(0, 1)}, {2, 1}, {2, Complex(1, 1)}});
  Value r;
  fn::mac(r, a, a);
  EXPECT_EQ(r(Scalar(0), Scalar(0)), Scalar(1));
  EXPECT_EQ(r(Scalar(1), Scalar(1)), Scalar(1));
  // <a_0, a_1> = i + 2 + 2 + 2 i: 25 / (9 * 4).
  EXPECT_NEAR(r.GetMatrix()(0, 1).real(), 25.0 / 36, 1e-15);
  EXPECT_FALSE(r.IsComplex());
  fn::mac(r, a, Mat({{Complex(3, -1)}, {Complex(6, -2)}, {Complex(6, -2)}}));  // (3 - i) a_0
  ASSERT_EQ(r.Size1(), 2u);
  ASSERT_EQ(r.Size2(), 1u);
  EXPECT_NEAR(r.GetMatrix()(0, 0).real(), 1, 1e-15);
  fn::mac(r, Mat({{1, 0}, {0, 0}}), Mat({{0, 1}, {2, 1}}));
  // A zero column divides by 0, which is NaN in both parts.
  const Complex none(NAN, NAN);
  EXPECT_EQ(Text(r), Text(Mat({{0, 0.5}, {none, none}})));
  EXPECT_TRUE(r.IsComplex());
}

TEST(Modal, SignatureDifferenceSeesTheScale) {
  const std::vector<Complex> a = {1, -2, 3};
  const std::vector<Complex> b = {2, 1, 2};
  Value r;
  fn::sdi(r, Mat({{1}, {-2}, {3}}), Mat({{2, 1, 2}, {1, -2, -4}, {2, 3, 6}}));
  // (1 - |a - b|^2 / (a'a + b'b))^2
  double difference = 0;
  double squares = 0;
  for (int i = 0; i < 3; ++i) {
    difference += std::norm(a[static_cast<std::size_t>(i)] - b[static_cast<std::size_t>(i)]);
    squares +=
        std::norm(a[static_cast<std::size_t>(i)]) + std::norm(b[static_cast<std::size_t>(i)]);
  }
  EXPECT_NEAR(r.GetMatrix()(0, 0).real(), std::pow(1 - difference / squares, 2), 1e-15);
  EXPECT_EQ(r.GetMatrix()(0, 1), Complex(1));
  EXPECT_NEAR(r.GetMatrix()(0, 2).real(), 0.64, 1e-15);  // b = 2 a: (2 * 2 / (1 + 4))^2
  EXPECT_FALSE(r.IsComplex());
}

}  // namespace
}  // namespace corvath::math
