#include "design/designs/indexed_responses.h"

#include "design/indexed_name.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cwchar>
#include <limits>
#include <optional>
#include <string>

namespace {

using namespace corvath::algorithm::datatypes;
using support::Scalar;
using support::Vec;

}  // namespace

TEST(IndexedName, TakesNamesApart) {
  const std::optional<std::int64_t> none;
  const struct {
    const wchar_t* name;
    const wchar_t* base;
    std::optional<std::int64_t> index;
  } cases[] = {
      {L"r[12]", L"r", 12},
      {L"r[+3]", L"r", 3},
      {L"r[-3]", L"r", -3},
      {L"x[mm][0]", L"x[mm]", 0},
      {L"x[mm]", L"x", none},
      {L"r[1] abs", L"r", 1},
      {L"[5]", L"", 5},
      {L"r]2[", L"r]2[", none},
      {L"r", L"r", none},
      {L"r[]", L"r", none},
      {L"r[-]", L"r", none},
      {L"r[1.5]", L"r", none},
      {L"r[ 1]", L"r", none},
      {L"r[9223372036854775807]", L"r", std::numeric_limits<std::int64_t>::max()},
      {L"r[-9223372036854775808]", L"r", std::numeric_limits<std::int64_t>::min()},
      {L"r[9223372036854775808]", L"r", none},
      {L"r[99999999999999999999999]", L"r", none},
  };
  for (const auto& c : cases) {
    const SplitName parts = SplitIndexedName(c.name);
    EXPECT_EQ(parts.base, c.base);
    EXPECT_EQ(parts.GetIndex(), c.index) << std::string(c.name, c.name + std::wcslen(c.name));
  }
  EXPECT_EQ(IndexedName(L"r", 12), L"r[12]");
}

TEST(IndexedResponses, MergeIntoVectorsInPlace) {
  const CDesignEntry text(L"text");
  const EntrySequence merged = MergeIndexedResponses({{L"a", CDesignEntry(1.0)},
                                                      {L"r[2]", CDesignEntry(Scalar(3.0, 1.0))},
                                                      {L"s[0]", CDesignEntry(4)},
                                                      {L"r[0]", CDesignEntry(1.0)},
                                                      {L"r[-1]", CDesignEntry(9.0)},
                                                      {L"t[0]", text},
                                                      {L"u[0]", CDesignEntry(Vec({1.0, 2.0}))},
                                                      {L"v[1048576]", CDesignEntry(5.0)},
                                                      {L"w[1]", CDesignEntry()}});
  const double nan = std::nan("");
  const EntrySequence expected = {{L"a", CDesignEntry(1.0)},
                                  {L"r", CDesignEntry(Vec({1.0, nan, {3.0, 1.0}}))},
                                  {L"s", CDesignEntry(Vec({4.0}))},
                                  {L"r[-1]", CDesignEntry(9.0)},
                                  {L"t[0]", text},
                                  {L"u[0]", CDesignEntry(Vec({1.0, 2.0}))},
                                  {L"v[1048576]", CDesignEntry(5.0)},
                                  {L"w", CDesignEntry(Vec({nan, nan}))}};
  EXPECT_EQ(merged, expected);
}
