#include "design/designs/design_manager.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace corvath::algorithm::datatypes;
using namespace support;

/// A container of one response "x", which has these values.
DesignManager Container(const std::vector<CDesignEntry>& values) {
  DesignManager designs;
  for (const CDesignEntry& value : values) {
    Design design;
    design.SetResponses({{L"x", value}});
    designs.Add(design);
  }
  return designs;
}

const CDesignEntry kNone;
const CDesignEntry kSignal(Sig({0.0, 1.0}, {{1.0, 2.0}}));

CDesignEntry VectorOf(std::size_t size) {
  return CDesignEntry(Vec(std::vector<support::Complex>(size, 1.0)));
}

}  // namespace

TEST(DesignTable, WidthsFollowTheValuesInOrder) {
  constexpr int kGone = -9;
  const struct {
    std::vector<CDesignEntry> values;
    int keep_largest, strict, model;  // width, or kGone for a name that is not listed
  } cases[] = {
      {{CDesignEntry(1.0), CDesignEntry(2)}, 0, 0, 0},
      {{CDesignEntry(Value(true)), CDesignEntry(L"text")}, 0, 0, 0},
      {{kNone, CDesignEntry(Vec({})), CDesignEntry(Value())}, -1, -1, kGone},
      {{kNone, VectorOf(3)}, 3, 3, 3},
      {{VectorOf(3), kNone, VectorOf(3)}, 3, 3, 3},
      {{VectorOf(3), VectorOf(2)}, 3, kGone, 3},
      {{VectorOf(2), VectorOf(3), VectorOf(2)}, 3, kGone, 3},
      {{CDesignEntry(1.0), VectorOf(1)}, 1, kGone, 1},
      {{CDesignEntry(Mat({{1.0, 2.0}, {3.0, 4.0}}))}, 4, 4, kGone},
      {{VectorOf(3), kSignal}, -1, -1, kGone},
      {{VectorOf(3), kSignal, VectorOf(2)}, 2, 2, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const DesignManager designs = Container(c.values);
    const auto width = [](const ResponseWidths& widths) {
      return widths.empty() ? kGone : static_cast<int>(widths[0].second);
    };
    EXPECT_EQ(width(designs.GetResponseWidths(true)), c.keep_largest);
    EXPECT_EQ(width(designs.GetResponseWidths(false)), c.strict);
    EXPECT_EQ(width(designs.GetModelResponseWidths()), c.model);
  }
}

TEST(DesignTable, ColumnsAreNamedByPosition) {
  EXPECT_EQ(DesignManager::GetResponseNames({{L"a", 0}, {L"s", -1}, {L"v", 3}, {L"w", 1}}),
            (std::vector<std::wstring>{L"a", L"v[0]", L"v[1]", L"v[2]", L"w[0]"}));
}

TEST(DesignTable, NumbersStandInTheColumnsOfTheirNames) {
  DesignManager designs;
  const auto add = [&designs](const EntrySequence& responses) {
    Design design;
    design.SetResponses(responses);
    designs.Add(design);
  };
  add({{L"a", CDesignEntry(1.5)},
       {L"v", CDesignEntry(Vec({1.0, {2.0, 5.0}, 3.0}))},
       {L"m", CDesignEntry(Mat({{1.0, 2.0}, {3.0, 4.0}}))}});
  add({{L"m", CDesignEntry(Value(true))},
       {L"v", CDesignEntry(Vec({7.0, 8.0}))},
       {L"a", CDesignEntry(L"2.5")}});
  add({{L"v", CDesignEntry(Scalar(6.0, 1.0))}, {L"a", CDesignEntry(L"text")}, {L"m", kSignal}});
  add({{L"a", kNone}});
  const Eigen::MatrixXd matrix =
      designs.GetResponseMatrix({{L"a", 0}, {L"s", -1}, {L"v", 3}, {L"m", 4}});
  const double nan = std::nan("");
  Eigen::MatrixXd expected(4, 8);
  expected << 1.5, 1, 2, 3, 1, 2, 3, 4,      //
      2.5, 7, 8, nan, 1, nan, nan, nan,      //
      nan, 6, nan, nan, nan, nan, nan, nan,  //
      nan, nan, nan, nan, nan, nan, nan, nan;
  ASSERT_EQ(matrix.rows(), 4);
  ASSERT_EQ(matrix.cols(), 8);
  for (Eigen::Index i = 0; i < 4; ++i)
    for (Eigen::Index k = 0; k < 8; ++k)
      EXPECT_TRUE(matrix(i, k) == expected(i, k) ||
                  (std::isnan(matrix(i, k)) && std::isnan(expected(i, k))))
          << i << ", " << k << ": " << matrix(i, k);
  // A width that is too small for a value cuts it off; no neighbour is touched.
  const Eigen::MatrixXd narrow = designs.GetResponseMatrix({{L"m", 2}, {L"a", 0}});
  EXPECT_EQ(narrow(0, 1), 2.0);
  EXPECT_EQ(narrow(0, 2), 1.5);
}
