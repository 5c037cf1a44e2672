#include "study/table/table_format.h"

#include "study/table/unit_text.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

namespace corvath::study {
namespace {

constexpr std::size_t kMaxRows = 200;  // more of a sample tell nothing new
constexpr std::size_t kMaxCells = 1 << 16;

struct Row {
  std::uint64_t number;
  std::string_view text;  ///< without its line end
  bool IsComment() const { return Trimmed(text).substr(0, 1) == "#"; }
};

/// The rows that are not blank. Line ends between quotation marks do not end a row, but for
/// comments.
std::vector<Row> SplitRows(std::string_view sample, bool complete) {
  std::vector<Row> rows;
  std::uint64_t number = 0;
  while (!sample.empty() && rows.size() < kMaxRows) {
    const std::size_t first = sample.find_first_not_of(" \t");
    bool quoted = false;
    const bool is_comment = first != std::string_view::npos && sample[first] == '#';
    std::size_t end = 0;
    for (; end < sample.size(); ++end) {
      if (sample[end] == '"' && !is_comment) quoted = !quoted;
      if (!quoted && (sample[end] == '\n' || sample[end] == '\r')) break;
    }
    ++number;
    if (end == sample.size() && !complete && !rows.empty()) break;  // half a row
    const std::string_view text = sample.substr(0, end);
    if (text.find_first_not_of(" \t,;\"") != std::string_view::npos) rows.push_back({number, text});
    if (end < sample.size()) end += sample.substr(end, 2) == "\r\n" ? 2 : 1;
    sample.remove_prefix(end);
  }
  return rows;
}

std::vector<std::string_view> SplitCells(std::string_view line, char separator) {
  std::vector<std::string_view> cells;
  bool quoted = false;
  std::size_t begin = 0;
  const auto add = [&](std::size_t end) {
    std::string_view cell = Trimmed(line.substr(begin, end - begin));
    if (cell.size() >= 2 && cell.front() == '"' && cell.back() == '"')
      cell = Trimmed(cell.substr(1, cell.size() - 2));
    cells.push_back(cell);
    begin = end + 1;
  };
  for (std::size_t i = 0; i < line.size() && cells.size() < kMaxCells; ++i) {
    if (line[i] == '"') quoted = !quoted;
    if (line[i] == separator && !quoted) add(i);
  }
  add(line.size());
  return cells;
}

bool IsNumber(std::string_view cell, char separator) {
  const auto kind = ReadNumber(cell).kind;
  return kind == CsvNumber::Kind::kNumber || kind == CsvNumber::Kind::kOutOfRange ||
         (separator != ',' && kind == CsvNumber::Kind::kDecimalComma);
}

/// At least half of the cells that are not missing.
bool HoldsNumbers(const std::vector<std::string_view>& cells, char separator) {
  std::size_t numbers = 0;
  std::size_t texts = 0;
  for (const std::string_view cell : cells)
    if (IsNumber(cell, separator))
      ++numbers;
    else if (!IsMissing(cell))
      ++texts;
  return numbers > 0 && numbers >= texts;
}

}  // namespace

const char* NameOfSeparator(char separator) {
  switch (separator) {
    case ',':
      return "commas";
    case ';':
      return "semicolons";
    case '\t':
      return "tabs";
    default:
      return "upright bars";
  }
}

namespace {

/// Decides between the separators that stand in the header.
void FindSeparator(const std::vector<Row>& rows, std::size_t header, TableFormat& format) {
  using Score = std::tuple<std::size_t, std::size_t>;  // rows that fit, cells that are numbers
  Score best{0, 0};
  std::string others;
  std::size_t found = 0;
  for (const char separator : {',', ';', '\t'}) {
    const std::size_t cells = CountCells(rows[header].text, separator);
    if (cells == 1) continue;
    Score score{0, 0};
    for (std::size_t i = header + 1; i < rows.size(); ++i) {
      if (rows[i].IsComment()) continue;
      const auto row = SplitCells(rows[i].text, separator);
      if (row.size() != cells) continue;
      ++std::get<0>(score);
      for (const std::string_view cell : row)
        if (IsNumber(cell, separator)) ++std::get<1>(score);
    }
    if (found > 0 && score == best) others += std::string(" or ") + NameOfSeparator(separator);
    if (found++ > 0 && !(score > best)) continue;
    if (score > best) others.clear();
    format.separator = separator;
    best = score;
  }
  if (found == 0 && CountCells(rows[header].text, '|') > 1) format.separator = '|';
  if (!others.empty())
    format.ambiguity = std::string(NameOfSeparator(format.separator)) + others +
                       " may separate its cells; put names that hold one in quotation marks";
}

/// What the numbers of the sample say.
NumberFormat::Decimal FindDecimal(const std::vector<Row>& rows, std::size_t header,
                                  char separator) {
  using Decimal = NumberFormat::Decimal;
  if (separator == ',') return Decimal::kPoint;
  bool comma = false;
  bool maybe = false;
  bool point = false;
  for (std::size_t i = header + 1; i < rows.size(); ++i)
    for (const std::string_view cell : SplitCells(rows[i].text, separator)) {
      const auto kind = ReadNumber(cell).kind;
      if (kind == CsvNumber::Kind::kDecimalComma)
        (MayBeThousands(cell) ? maybe : comma) = true;
      else if (kind == CsvNumber::Kind::kNumber && cell.find('.') != std::string_view::npos)
        point = true;
    }
  if (point && (comma || maybe)) return Decimal::kMixed;
  if (point) return Decimal::kPoint;
  if (comma) return Decimal::kComma;
  // Where semicolons separate, commas are decimal as a rule: they could separate otherwise.
  return separator == ';' ? Decimal::kUndecided : Decimal::kMixed;
}

/// The separator that a line "sep=;" names; 0 for any other line.
char NamedSeparator(std::string_view line) {
  constexpr std::string_view kBegin = "sep=";
  if (line.size() != kBegin.size() + 1 || line.substr(0, kBegin.size()) != kBegin) return '\0';
  const char separator = line.back();
  return std::string_view(",;\t|").find(separator) == std::string_view::npos ? '\0' : separator;
}

std::uint64_t FindUnitRow(const std::vector<Row>& rows, std::size_t header, char separator) {
  std::size_t first = header + 1;
  while (first < rows.size() && rows[first].IsComment()) ++first;
  if (first >= rows.size()) return 0;
  const auto units = SplitCells(rows[first].text, separator);
  if (units.size() != CountCells(rows[header].text, separator)) return 0;
  bool any = false;
  for (const std::string_view cell : units) {
    const std::string unit = UnitOf(cell);
    if (unit.empty() && !cell.empty()) return 0;
    any = any || (!unit.empty() && unit != "-");
  }
  if (!any) return 0;
  for (std::size_t i = first + 1; i < rows.size(); ++i) {
    if (rows[i].IsComment()) continue;
    const auto cells = SplitCells(rows[i].text, separator);
    for (std::size_t k = 0; k < std::min(cells.size(), units.size()); ++k)
      if (!units[k].empty() && units[k] != "-" && !IsMissing(cells[k]) &&
          !IsNumber(cells[k], separator))
        return 0;
  }
  return rows[first].number;
}

}  // namespace

std::size_t CountCells(std::string_view line, char separator) {
  bool quoted = false;
  std::size_t cells = 1;
  for (const char c : line) {
    if (c == '"') quoted = !quoted;
    if (c == separator && !quoted) ++cells;
  }
  return cells;
}

TableFormat FindTableFormat(std::string_view sample, bool complete) {
  TableFormat format;
  std::vector<Row> rows = SplitRows(sample, complete);
  const char named = rows.empty() ? '\0' : NamedSeparator(rows.front().text);
  if (named != '\0') {
    format.separator_row = rows.front().number;
    rows.erase(rows.begin());
  }
  const auto row = std::find_if_not(rows.begin(), rows.end(),
                                    [](const Row& candidate) { return candidate.IsComment(); });
  if (row == rows.end()) return format;
  auto header = static_cast<std::size_t>(row - rows.begin());
  if (named != '\0')
    format.separator = named;
  else
    FindSeparator(rows, header, format);
  const auto cells = SplitCells(rows[header].text, format.separator);
  if (header > 0 && HoldsNumbers(cells, format.separator) && cells.size() > 1 &&
      CountCells(rows[header - 1].text, format.separator) == cells.size())
    format.commented_header = rows[--header].number;
  if (!format.ambiguity.empty())
    format.ambiguity = "row " + std::to_string(rows[header].number) + ": " + format.ambiguity;
  format.decimal = FindDecimal(rows, header, format.separator);
  format.unit_row = FindUnitRow(rows, header, format.separator);
  return format;
}

}  // namespace corvath::study
