#include "calculator/function_table.h"

#include "foundation/text.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using corvath::calculator::Function;
using corvath::calculator::FunctionTable;
using corvath::calculator::GetFunctionHelp;
using corvath::utils::ToUtf8;

TEST(FunctionTable, KnowsNamesWithTheirCounts) {
  const std::pair<const wchar_t*, std::vector<int>> cases[] = {{L"sin", {1}},
                                                               {L"atan2", {1, 2}},
                                                               {L"round", {1, 2}},
                                                               {L"max", {-1}},
                                                               {L"rand", {3}},
                                                               {L"powmeandev", {3}},
                                                               {L"norm", {1, 2}},
                                                               {L"times", {2}},
                                                               {L"vec", {-1}},
                                                               {L"matrix", {-1}},
                                                               {L"series", {-1}},
                                                               {L"xydata", {1, 2}},
                                                               {L"interpolate", {2, 3, 5}},
                                                               {L"area", {1, 3}},
                                                               {L"isinitialized", {1}}};
  for (const auto& [name, counts] : cases) {
    const Function* function = FunctionTable::Get().Find(name);
    ASSERT_TRUE(function) << ToUtf8(name);
    for (int count = 0; count < 12; ++count)
      EXPECT_EQ(
          function->Takes(static_cast<std::size_t>(count)),
          counts[0] == Function::kAnyCount || std::count(counts.begin(), counts.end(), count) > 0)
          << ToUtf8(name) << " " << count;
  }
  EXPECT_FALSE(FunctionTable::Get().Find(L"Sin"));
  EXPECT_FALSE(FunctionTable::Get().Find(L""));
}

TEST(FunctionTable, EachHelpRecordBelongsToAFunctionAndDescribesACallThatItTakes) {
  for (const auto& [name, records] : GetFunctionHelp()) {
    const Function* function = FunctionTable::Get().Find(name);
    ASSERT_TRUE(function) << ToUtf8(name);
    for (const auto& record : records) {
      EXPECT_EQ(record.signature.substr(0, name.size() + 1), name + L"(");
      EXPECT_FALSE(record.text.empty()) << ToUtf8(name);
      EXPECT_TRUE(function->Takes(record.arguments.size())) << ToUtf8(record.signature);
      for (const auto& argument : record.arguments) {
        EXPECT_NE(record.signature.find(argument.name), std::wstring::npos)
            << ToUtf8(record.signature) << " " << ToUtf8(argument.name);
        EXPECT_FALSE(argument.values.empty() || argument.types.empty() ||
                     argument.description.empty())
            << ToUtf8(record.signature);
      }
    }
  }
  // Functions that have none, as some names are short for others.
  for (const wchar_t* name : {L"max", L"series", L"vec", L"mat", L"isnan"})
    EXPECT_EQ(GetFunctionHelp().count(name), 0u) << ToUtf8(name);
}

}  // namespace
