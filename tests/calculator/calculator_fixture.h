#pragma once

#include "calculator/calculator.h"
#include "foundation/text.h"
#include "support/values.h"

namespace support {

/// A calculator, and what its texts come to.
class CalculatorFixture : public testing::Test {
 protected:
  Value Evaluate(const std::wstring& text) { return calculator_.Evaluate(text); }

  /// Kind, sizes and numbers, to the bit.
  void ExpectValue(const std::wstring& text, const Value& expected) {
    try {
      EXPECT_EQ(Text(Evaluate(text)), Text(expected)) << corvath::utils::ToUtf8(text);
    } catch (const std::exception& error) {
      ADD_FAILURE() << corvath::utils::ToUtf8(text) << ": " << error.what();
    }
  }

  /// The message, "message@offset" of an error with a place.
  std::string Failure(const std::wstring& text) {
    try {
      return "gives " + Text(Evaluate(text));
    } catch (const CExpressionPositionException& error) {
      return corvath::utils::ToUtf8(error.GetRawMessage()) + "@" +
             std::to_string(error.GetOffset());
    } catch (const std::exception& error) {
      return error.what();
    }
  }

  CCalculator calculator_;
};

}  // namespace support
