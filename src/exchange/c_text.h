#pragma once

#include <string>
#include <string_view>

namespace corvath::exchange {

/// A string literal of C for any UTF-8 text: no trigraph, no line end, ASCII alone.
std::string CString(std::string_view utf8);

/// A text for a comment of C or Python, in one line: nothing in it ends the comment, begins another
/// one or reorders what is shown.
std::string CommentText(std::string_view utf8);

/// A name in quotation marks for a comment, cut where it is long.
std::string ShownName(std::string_view utf8);

}  // namespace corvath::exchange
