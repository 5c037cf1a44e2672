#include "study/solve/design_rows.h"

#include "study/refusal.h"
#include "study/table/csv_cell.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace corvath::study {
namespace {

using Index = Eigen::Index;

constexpr Index kIgnored = -1;

/// A row for one more design.
Index MakeRow(DesignRows& rows, std::size_t num_inputs) {
  constexpr Index kFirst = 64;
  const auto row = static_cast<Index>(rows.GetSize());
  if (row >= rows.values.rows())
    rows.values.conservativeResize(std::max(kFirst, 2 * rows.values.rows()),
                                   static_cast<Index>(num_inputs));
  return row;
}

}  // namespace

InputCells::InputCells(const std::vector<std::string>& inputs, const TableColumns& columns)
    : inputs_(inputs) {
  for (const std::string& input : inputs) {
    const TableColumn* const told = columns.Find(input);
    told_.push_back(told == nullptr ? TableColumn() : *told);
  }
}

void InputCells::SetHeader(CsvHeader header) {
  header_ = std::move(header);
  by_cell_.assign(header_->GetSize(), kIgnored);
  bool is_numeric = !inputs_.empty();
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    const std::string& title = told_[i].title;
    const bool by_title = !title.empty() && !header_->Has(inputs_[i]) && header_->Has(title);
    columns_.push_back(header_->Find(by_title ? title : inputs_[i], "input"));
    Index& cell = by_cell_[columns_.back()];
    is_numeric = is_numeric && !told_[i].IsRead() && cell == kIgnored;
    cell = static_cast<Index>(i);
  }
  if (!is_numeric) by_cell_.clear();
}

void InputCells::Read(std::uint64_t row, const CsvReader::Record& record, NumberFormat& format,
                      DesignRows& rows) const {
  header_->CheckSize(row, record);
  const Index design = MakeRow(rows, inputs_.size());
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    const std::string& cell = record[columns_[i]];
    const CsvNumber number = format.Read(cell);
    const bool is_number = number.kind == CsvNumber::Kind::kNumber;
    double& value = rows.values(design, static_cast<Index>(i));
    value = number.value;
    if (told_[i].IsRead() && !IsMissing(cell))
      value = told_[i].ReadCell(cell, number.value, is_number, header_->Place(row, columns_[i]));
    else if (!is_number)
      throw Refusal(header_->Place(row, columns_[i]) + ": " + RefusalText(cell, number.kind));
  }
  rows.numbers.push_back(row);
}

/// Adds the design of a line if it holds as many cells as the header, and in those of inputs
/// numbers as std::from_chars() knows them; false otherwise.
bool InputCells::ReadNumbers(std::string_view line, char separator, DesignRows& rows) const {
  const Index design = MakeRow(rows, inputs_.size());
  const char* at = line.data();
  const char* const end = at + line.size();
  const auto skip_blanks = [&] {
    while (at != end && (*at == ' ' || *at == '\t') && *at != separator) ++at;
  };
  for (std::size_t cell = 0; cell < by_cell_.size(); ++cell) {
    if (cell > 0 && (at == end || *at++ != separator)) return false;
    if (by_cell_[cell] == kIgnored) {
      const void* const found = std::memchr(at, separator, static_cast<std::size_t>(end - at));
      at = found == nullptr ? end : static_cast<const char*>(found);
      continue;
    }
    skip_blanks();
    const auto [stop, error] = std::from_chars(at, end, rows.values(design, by_cell_[cell]));
    if (error != std::errc()) return false;
    at = stop;
    skip_blanks();
  }
  return at == end;
}

void InputCells::ReadLines(const PlainLines& lines, char separator, NumberFormat format,
                           DesignRows& rows) const {
  const bool is_numeric = !by_cell_.empty() && format.GetDecimal() == NumberFormat::Decimal::kPoint;
  std::string_view text = lines.text;
  std::string_view line;
  CsvReader::Record record;
  for (std::uint64_t row = lines.first_row; TakeLine(text, line); ++row) {
    if (is_numeric && ReadNumbers(line, separator, rows)) {
      rows.numbers.push_back(row);
      continue;
    }
    SplitPlainLine(line, separator, record);
    if (!IsBlank(record)) Read(row, record, format, rows);
  }
}

std::string InputCells::Place(std::uint64_t row, std::size_t input) const {
  return header_->Place(row, columns_[input]);
}

}  // namespace corvath::study
