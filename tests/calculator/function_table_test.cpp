#include "calculator/function_table.h"

#include "calculator/calculator.h"
#include "foundation/math_exception.h"
#include "foundation/text.h"
#include "support/read_value.h"

#include <boost/numeric/conversion/cast.hpp>

namespace {

using corvath::calculator::FindFunctionHelp, corvath::calculator::Function,
    corvath::calculator::FunctionHelp, corvath::calculator::FunctionTable,
    corvath::calculator::GetFunctionHelp;
using corvath::math::Value;
using corvath::utils::FromUtf8, corvath::utils::ToUtf8;

constexpr int kAny = Function::kAnyCount;

TEST(FunctionTable, EachFunctionHasHelpForEachOfItsCounts) {
  for (const auto& [name, function] : FunctionTable::Get().GetFunctions()) {
    SCOPED_TRACE(ToUtf8(name));
    const std::vector<FunctionHelp>* records = FindFunctionHelp(name);
    ASSERT_TRUE(records);
    std::set<std::size_t> counts;
    bool any_count = name.find(L"peaks") != std::wstring::npos;
    for (const FunctionHelp& record : *records) {
      const std::wstring& signature = record.signature;
      SCOPED_TRACE(ToUtf8(signature));
      EXPECT_EQ(signature.substr(0, name.size() + 1), name + L"(");
      EXPECT_EQ(signature.back(), L')');
      EXPECT_EQ(record.text.back(), L'.');
      EXPECT_LE(record.text.find(L'.'), 80u);  // the first sentence fits on a line
      any_count = any_count || signature.find(L"...") != std::wstring::npos;
      // In the signature the arguments stand in their order, the optional ones behind a bracket.
      std::size_t num_required = 0, at = name.size();
      const std::size_t bracket = signature.find(L'[', at);
      for (const auto& argument : record.arguments) {
        at = signature.find(argument.name, at + 1);
        ASSERT_NE(at, std::wstring::npos) << ToUtf8(argument.name);
        EXPECT_EQ(argument.optional, at > bracket) << ToUtf8(argument.name);
        EXPECT_FALSE(argument.values.empty() || argument.types.empty());
        EXPECT_TRUE(argument.description.back() == L'.' || argument.description.back() == L')');
        if (!argument.optional) ++num_required;
      }
      for (std::size_t n = num_required; n <= record.arguments.size(); ++n) counts.insert(n);
      EXPECT_TRUE(function.Takes(num_required) && function.Takes(record.arguments.size()));
    }
    for (const int count : function.counts)
      EXPECT_TRUE(count == kAny ? any_count : counts.count(static_cast<std::size_t>(count)) > 0)
          << count;
  }
  for (const auto* table : {&GetFunctionHelp(), &corvath::calculator::GetFurtherFunctionHelp()})
    for (const auto& [name, records] : *table)
      EXPECT_TRUE(FunctionTable::Get().Find(name)) << ToUtf8(name);
  EXPECT_FALSE(FindFunctionHelp(L"sinus"));
  EXPECT_FALSE(FunctionTable::Get().Find(L"Sin"));
  // The shorter table leaves some out.
  for (const wchar_t* name : {L"max", L"series", L"vec", L"mat", L"fft", L"besselFilter", L"read",
                              L"calculate", L"isnan"})
    EXPECT_EQ(GetFunctionHelp().count(name), 0u) << ToUtf8(name);
}

/// Values that functions do not expect; none of them is large.
std::vector<Value> OddValues() {
  std::vector<Value> values{Value(Value::Matrix(0, 0)),
                            Value::Signal(support::RawVector({0, 1, 2}), Value::Matrix(0, 3))};
  std::istringstream texts(
      "nothing true 0 1 2 -1 0.5 1e300 4e9 nan inf 1+2i [] [0.1,0.2] [nan,2,inf] [[1,2],[3,5]] "
      "[[nan,0,0+1i],[inf,-inf,0]] xy[0,1][3,4] xy[1,1,1][1,2,3] xy[0,2,1][1,2,3] "
      "signal[3,2,1,0][1,5,2,8][0,0,0,0] xy[0,nan,2][1,2,3] signal[0,1,2][nan,1,inf] "
      "xy[-inf,0,inf][1,2,3] xy[-1e308,0,1e308][1e308,2,-1e308] xy[0,1,2][1+1i,2,0+nani]");
  for (std::string text; texts >> text;) values.push_back(support::ReadValue(text));
  return values;
}

TEST(FunctionTable, FunctionsAnswerOrRefuseOddValues) {
  CCalculator calculator;
  std::vector<std::string> names;
  for (const Value& value : OddValues()) {
    names.push_back("_" + std::to_string(names.size()));
    calculator.SetObject(FromUtf8(names.back()), L"", value);
  }
  std::mt19937 random(6);
  const auto pick = [&] { return names[random() % names.size()]; };
  int answers = 0;
  for (const auto& [name, function] : FunctionTable::Get().GetFunctions())
    for (const int allowed : function.counts) {
      const int tries = allowed == 1 ? static_cast<int>(names.size()) : 300;
      for (int i = 0; i < tries; ++i) {
        const int count = allowed == kAny ? 1 + static_cast<int>(random() % 5) : allowed;
        std::string text = ToUtf8(name) + "(";
        text += allowed == 1 ? names[static_cast<std::size_t>(i)] : pick();
        for (int j = 1; j < count; ++j) text += "," + pick();
        text += ")";
        try {
          calculator.Evaluate(FromUtf8(text));
          ++answers;
        } catch (const CExpressionPositionException& error) {
          EXPECT_FALSE(error.GetRawMessage().empty()) << text;
        } catch (const boost::numeric::bad_numeric_cast&) {
        } catch (const CCalculatorException& error) {
          ADD_FAILURE() << text << " without a place: " << error.what();
        } catch (const std::exception& error) {
          ADD_FAILURE() << text << " ends in another exception: " << error.what();
        }
      }
    }
  EXPECT_GT(answers, 500);
}

}  // namespace
