#include "foundation/text.h"

#include "foundation/exception.h"
#include "support/testing.h"

namespace corvath {
namespace {

TEST(Text, EachUndecodableSequenceBecomesOneReplacement) {
  // Sequences and counts after the Unicode Standard, section 3.9, tables 3-8 to 3-11.
  const std::pair<const char*, const wchar_t*> cases[] = {
      {"", L""},
      {"a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80", L"a\u00e9\u20ac\U0001F600"},
      {"\xc0\xaf", L"\ufffd\ufffd"},                      // overlong
      {"\xe0\x9f\xbf", L"\ufffd\ufffd\ufffd"},            // overlong, three bytes
      {"\xed\xa0\x80", L"\ufffd\ufffd\ufffd"},            // surrogate
      {"\xf4\x90\x80\x80", L"\ufffd\ufffd\ufffd\ufffd"},  // beyond U+10FFFF
      {"\xe1\x80\xe2\xf0\x91\x92\xf1\xbf\x41", L"\ufffd\ufffd\ufffd\ufffdA"},  // cut short
      {"x\x80y", L"x\ufffdy"},
      {"\xf0\x9f\x98", L"\ufffd"},
  };
  for (const auto& [utf8, wide] : cases) EXPECT_EQ(utils::FromUtf8(utf8), wide) << utf8;
}

TEST(Text, WideTextThatIsNoUnicodeIsReplacedOrRefused) {
  const std::wstring text{L'a', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000), L'b'};
  EXPECT_EQ(utils::ToUtf8(text), "a??b");
  EXPECT_MESSAGE("invalid input character", utils::ToUtf8Strict(text));
  for (const wchar_t c : {L'\u007f', L'\u0080', L'\u07ff', L'\u0800', L'\uffff', L'\U0010ffff'})
    EXPECT_EQ(utils::FromUtf8(utils::ToUtf8Strict(std::wstring(1, c))), std::wstring(1, c));
}

TEST(Exception, KeepsTheWideMessageAndNarrowsWhat) {
  const std::wstring message = L"gr\u00f6\u00dfe \u20ac";
  const utils::runtime_error error(message);
  EXPECT_EQ(error.GetMessage(), message);
  EXPECT_STREQ(error.what(), "gr??e ?");  // the classic locale knows ASCII alone
}

}  // namespace
}  // namespace corvath
