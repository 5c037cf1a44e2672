#pragma once

#include "calculator/syntax.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace corvath::calculator {

/// Longest text that is parsed, in characters: its tree takes some 250 bytes for each of them.
constexpr std::size_t kMaxTextLength = std::size_t{1} << 21;
/// Deepest nesting of rules inside each other; a pair of parentheses takes two levels.
constexpr int kMaxNesting = 1000;

/// What an error says about it.
constexpr const wchar_t* kNestedTooDeep = L"Expressions are nested too deep inside each other";

/// `text` without its blanks (space and tab), also those in quoted strings.
std::wstring DeleteBlanks(std::wstring_view text);

/// Whether `c` may begin a name: a letter or "_". Letters are those of Unicode, whatever the locale
/// of the process.
bool BeginsName(wchar_t c);

struct ParseResult {
  SyntaxTree tree;        ///< of what matched; no nodes unless `match`
  std::size_t stop = 0;   ///< offset up to which a sequence of rules went through
  bool match = false;     ///< the start rule matched, perhaps only the text's beginning
  bool full = false;      ///< it matched and consumed the whole text
  bool too_deep = false;  ///< no match, for its nesting goes too deep at `stop`
};

enum class Whitespace {
  kRefuse,  ///< for texts without blanks: every other white space stops the parser
  kSkip     ///< white space may stand between tokens
};

/// Parses an expression text. The grammar ("[ ]" optional, "{ }" repeated, first match wins, what
/// an optional part took is not given back, a repetition gives its last, failed attempt back):
///
///     expression  assign_macro | assign | binary0
///     binary0..3  next { operator next }      && ||;  <= >= < > == !=;  + -;  * / %
///     unary       [ "!" | "-" ] binary4
///     binary4     ( slice | index ) { ( "^" | "**" ) ( slice | index ) }
///     slice       operand "[" [binary0] ":" [binary0] [ ":" [binary0] ] "]"
///     index       operand [ "[" [binary0] [","] [binary0] "]" ]     something between the brackets
///     operand     "(" binary0 ")" | if | switch | matrix | vector | constant | macro | function
///                 | object
///     function    NAME "(" [ argument { "," argument } ] ")",  argument: string | expression
///     vector      "[" element { "," element } "]",             element: [vector] expression
///     matrix      "[" row { "," row } "]",                     row: [matrix] vector
///     macro       "$" NAME "(" [ string | expression { "," expression } ] ")"
///     if          "#if" binary0 ( "#then" | ":" ) binary0 "#else" binary0
///     switch      "#switch" binary0 [":"] { "#case" binary0 ":" binary0 } "#default" [":"] binary0
///     assign      object "=" { object "=" } expression
///     assign_macro  "$" NAME "(" [ NAME { "," NAME } ] ")" "=" expression
///
/// Recursive descent with one function for each rule, where the rules that several others try at
/// one place remember their outcome there: linear time and space, and nesting costs nothing extra.
/// A nesting deeper than kMaxNesting is no match; it stops at the place that goes too deep.
/// @throws std::length_error  longer than kMaxTextLength
ParseResult Parse(std::wstring_view text, Whitespace whitespace = Whitespace::kRefuse);

}  // namespace corvath::calculator
