#include "foundation/exception.h"

#include "support/testing.h"

namespace corvath::utils {
namespace {

TEST(Exception, KeepsTheWideMessageAndNarrowsWhat) {
  const std::wstring message = L"gr\u00f6\u00dfe \u20ac";
  const runtime_error error(message);
  EXPECT_EQ(error.GetMessage(), message);
  EXPECT_STREQ(error.what(), "gr??e ?");  // the classic locale knows ASCII alone
  // Each class can be caught as its standard base and as the mix-in.
  EXPECT_THROW(throw runtime_error(L""), std::runtime_error);
  EXPECT_THROW(throw logic_error(L""), std::logic_error);
  EXPECT_THROW(throw out_of_range(L""), std::out_of_range);
  EXPECT_THROW(throw invalid_argument(L""), std::invalid_argument);
  EXPECT_THROW(throw out_of_range(L""), utils::exception);
}

}  // namespace
}  // namespace corvath::utils
