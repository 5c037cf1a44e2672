#include "study/table/csv_header.h"

#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <algorithm>

namespace corvath::study {
namespace {

std::string RowText(const std::string& table, std::uint64_t row) {
  if (row == TableSource::kNoRow) return table + ": ";
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

bool CsvHeader::Has(const std::string& name) const {
  return std::find(names_.begin(), names_.end(), name) != names_.end();
}

std::string CsvHeader::Hint(const std::string& name) const {
  if (names_.size() == 1 && names_[0].find(' ') != std::string::npos)
    return "; if blanks separate its cells, save it with commas, semicolons or tabs; the only "
           "column is " +
           Quoted(names_[0]);
  return "; " + NameHint(name, names_, "the columns are");
}

void CsvHeader::CheckSize(std::uint64_t row, const CsvReader::Record& record) const {
  if (record.size() == names_.size()) return;
  // Separators at the end of a row are no cells of theirs.
  if (record.size() > names_.size() &&
      std::all_of(record.begin() + static_cast<std::ptrdiff_t>(names_.size()), record.end(),
                  [](const std::string& cell) { return cell.empty(); }))
    return;
  std::string text = RowText(table_, row) + std::to_string(record.size()) +
                     (record.size() == 1 ? " cell" : " cells") + ", but the header has " +
                     std::to_string(names_.size());
  if (record.size() < names_.size())
    text += ": none for the column " + Quoted(names_[record.size()]);
  else
    text += ": " + Quoted(record[names_.size()]) + " stands behind the column " +
            Quoted(names_.back()) +
            " (decimal commas? write points, or separate the cells with semicolons)";
  throw Refusal(text);
}

std::string CsvHeader::Place(std::uint64_t row, std::size_t column) const {
  return table_ + ": row " + std::to_string(row) + ", column " + Quoted(names_[column]);
}

}  // namespace corvath::study
