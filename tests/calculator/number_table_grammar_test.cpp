#include "calculator/number_table_grammar.h"

#include "calculator/number_table.h"
#include "support/values.h"

#include <boost/numeric/ublas/matrix_proxy.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <regex>

namespace {

using corvath::math::Value;

/// The rows that a table was made of.
std::vector<std::vector<double>> Rows(const Value& table) {
  if (table.IsUninitialized()) return {};
  if (table.IsScalar()) return {{table.GetScalar().real()}};
  std::vector<std::vector<double>> rows;
  const auto add = [&](const auto& numbers) {
    rows.emplace_back();
    for (const auto& z : numbers) rows.back().push_back(z.real());
  };
  if (table.IsVector()) {
    add(table.GetVector());
    return rows;
  }
  const Value::Matrix& data = table.GetMatrix();
  if (table.IsMatrix()) {
    for (std::size_t i = 0; i < data.size1(); ++i)
      add(boost::numeric::ublas::matrix_row<const Value::Matrix>(data, i));
    return rows;
  }
  for (std::size_t j = 0; j < data.size2(); ++j) {
    rows.push_back({table.GetVector()(j).real()});
    for (std::size_t i = 0; i < data.size1(); ++i) rows.back().push_back(data(i, j).real());
  }
  return rows;
}

bool SameNumber(double x, double y) {
  if (std::isnan(x) || std::isnan(y)) return std::isnan(x) && std::isnan(y);
  // Qi's numbers carry the rounding errors of a few operations.
  return x == y || std::abs(x - y) <= 1e-14 * std::abs(x);
}

TEST(NumberTable, ReadsWhatTheGrammarReads) {
  static const char* const kPieces[] = {"0",     "1",  "7",   "12",   ".",       "+",  "-",  "e",
                                        "E2",    "-3", " ",   " ",    "\t",      ",",  ";",  "x",
                                        "(",     ")",  "nan", "Inf",  "\n",      "\n", "\r", "\r\n",
                                        "inity", "n",  "i",   "\x01", "\xC3\xA4"};
  std::mt19937 random(7);
  const std::regex out_of_range("[eE][+-]?[0-9]{3,}");  // which Qi refuses
  int tables = 0;
  for (int round = 0; round < 100000; ++round) {
    std::string text;
    for (std::size_t n = random() % 16; n > 0; --n) text += kPieces[random() % std::size(kPieces)];
    if (std::regex_search(text, out_of_range)) continue;
    const auto open = text.find("nan(");
    if (open != std::string::npos && text.find_first_of("\n\r", open) != std::string::npos)
      continue;  // Qi looks for the closing parenthesis across lines
    std::vector<std::vector<double>> expected = support::ReadTableWithSpirit(text);
    std::vector<std::vector<double>> rows = Rows(corvath::calculator::ParseNumberTable(text, 0));
    if (expected.size() > 1) ++tables;
    if (expected.size() > 1 && expected.front().size() == 1) {  // a column becomes a vector
      for (std::size_t i = 1; i < expected.size(); ++i)
        expected.front().push_back(expected[i].front());
      expected.resize(1);
    }
    ASSERT_EQ(rows.size(), expected.size()) << testing::PrintToString(text);
    for (std::size_t i = 0; i < rows.size(); ++i)
      ASSERT_TRUE(std::equal(rows[i].begin(), rows[i].end(), expected[i].begin(), expected[i].end(),
                             SameNumber))
          << testing::PrintToString(text) << testing::PrintToString(rows)
          << testing::PrintToString(expected);
  }
  EXPECT_GT(tables, 1000);
}

}  // namespace
