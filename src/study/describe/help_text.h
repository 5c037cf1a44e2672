#pragma once

#include "calculator/constants.h"

#include <string>
#include <string_view>

namespace corvath::study {

/// UTF-8 for a terminal of a help text's markup: lines for <br>, ^ in front of <sup>.
std::string PlainText(std::wstring_view markup);

/// `text` up to its first full stop or line end.
std::string FirstSentence(const std::string& text);

/// `text` in lines of about 80 characters, each behind `indent` and with a line end.
std::string Wrapped(const std::string& text, const std::string& indent);

/// "3.14159: circumference ..." for example.
std::string DescribeConstant(const corvath::calculator::Constant& constant);

}  // namespace corvath::study
