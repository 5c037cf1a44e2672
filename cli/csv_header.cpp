#include "csv_header.h"

#include "commands.h"
#include "csv_cell.h"
#include "foundation/text.h"
#include "name_hint.h"

#include <algorithm>

namespace cli {
namespace {

bool IsUtf8(const std::string& text) {
  return corvath::utils::ToUtf8(corvath::utils::FromUtf8(text)) == text;
}

std::string RowText(const std::string& table, std::uint64_t row) {
  return table + ": row " + std::to_string(row) + ": ";
}

}  // namespace

std::size_t CsvHeader::Find(const std::string& name, const char* kind) const {
  const auto found = std::find(names_.begin(), names_.end(), name);
  if (found == names_.end())
    throw Refusal(RowText(table_, row_) + "no column for the " + kind + ' ' + Quoted(name) +
                  Hint(name));
  if (std::find(found + 1, names_.end(), name) != names_.end())
    throw Refusal(RowText(table_, row_) + "two columns " + Quoted(name));
  return static_cast<std::size_t>(found - names_.begin());
}

std::string CsvHeader::Hint(const std::string& name) const {
  constexpr const char* kAdvice =
      ", not commas; save the table with commas between the cells and points in the numbers";
  if (names_.size() == 1 && names_[0].find(';') != std::string::npos)
    return std::string("; semicolons separate its columns") + kAdvice;
  if (names_.size() == 1 && names_[0].find('\t') != std::string::npos)
    return std::string("; tabs separate its columns") + kAdvice;
  if (!std::all_of(names_.begin(), names_.end(), IsUtf8))
    return "; the names are not in UTF-8; save the table as UTF-8";
  return "; " + NameHint(name, names_, "the columns are");
}

void CsvHeader::CheckSize(std::uint64_t row, const CsvReader::Record& record) const {
  if (record.size() == names_.size()) return;
  std::string text = RowText(table_, row) + std::to_string(record.size()) +
                     (record.size() == 1 ? " cell" : " cells") + ", but the header has " +
                     std::to_string(names_.size());
  if (record.size() < names_.size())
    text += ": none for the column " + Quoted(names_[record.size()]);
  else
    text += ": " + Quoted(record[names_.size()]) + " stands behind the column " +
            Quoted(names_.back()) + " (decimal commas? write points)";
  throw Refusal(text);
}

std::string CsvHeader::Place(std::uint64_t row, std::size_t column) const {
  return table_ + ": row " + std::to_string(row) + ", column " + Quoted(names_[column]);
}

}  // namespace cli
