#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"
#include "calculator/number_table.h"
#include "foundation/text.h"

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

// Tables of numbers from files and texts.
namespace corvath::calculator {

namespace {

using namespace help;
using math::Value;

std::wstring QuotedString(const FunctionCall& call, std::size_t i) {
  if (!call.IsString(i)) call.Raise(L"Wrong argument type. Quoted string expected.");
  return call.GetString(i);
}

void Calculate(FunctionCall& call, Value& result) {
  result = ParseNumberTable(utils::ToUtf8(QuotedString(call, 0)), 0);
}

/// The count of lines that an argument gives in quotes.
std::uint64_t SkippedLines(const FunctionCall& call, std::size_t i) {
  const std::string digits = utils::ToUtf8(QuotedString(call, i));
  const char* const end = digits.data() + digits.size();
  std::uint64_t count = 0;
  const auto [last, error] = std::from_chars(digits.data(), end, count);
  if (error != std::errc() || last != end) call.Raise(L"Unsigned integer constant expected");
  return count;
}

void Read(FunctionCall& call, Value& result) {
  const std::filesystem::path path(utils::ToUtf8(QuotedString(call, 0)));
  try {
    const std::filesystem::file_status status = std::filesystem::status(path);
    if (!std::filesystem::exists(status)) call.Raise(L"The given file doesn't seem to exist.");
    if (!std::filesystem::is_regular_file(status))
      call.Raise(L"The given path doesn't seem to be a regular file.");
    const std::uint64_t skipped = call.Count() > 1 ? SkippedLines(call, 1) : 0;
    result = ReadNumberTable(path, skipped);
  } catch (const std::filesystem::filesystem_error& error) {
    call.Raise(utils::FromUtf8(error.what()));
  }
}

}  // namespace

void AddTableFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kData, {L"read"}, {1, 2}, Read);
  table.Add(Group::kData, {L"calculate"}, {1}, Calculate);
}

void AddTableHelp(HelpTable& table) {
  const wchar_t* const kRows =
      L"<br>Lines in front of the first one that begins with a number are passed over. Numbers may "
      L"be separated by anything that is no number; the table ends in front of a line that does "
      L"not hold as many numbers as its first row. It becomes a scalar, a vector if it is one row "
      L"or column, otherwise xy-data or a signal if the first column ascends, else a matrix.";
  table[L"read"] = {{L"read(\"file\" [, \"n\"])",
                     std::wstring(L"A table of numbers from a file.") + kRows,
                     {{L"file", L"a path without blanks", L"quoted text", false, L"The file."},
                      {L"n", L"an integer", L"quoted text", true,
                       L"The number of lines to leave out at the begin (default value is 0)."}}}};
  table[L"calculate"] = {{L"calculate(\"text\")",
                          std::wstring(L"A table of numbers from a text.") + kRows +
                              L" Blanks of the text do not count.",
                          {{L"text", L"numbers", L"quoted text", false,
                            L"The table, its numbers separated by semicolons for example."}}}};
}

}  // namespace corvath::calculator
