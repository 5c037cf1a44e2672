#include "study/table/memory_table.h"

#include "study/describe/json_text.h"
#include "study/refusal.h"
#include "study/table/csv_header.h"
#include "study/table/csv_reader.h"
#include "study/table/name_hint.h"
#include "study/table/unit_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace corvath::study {
namespace {

/// The shortest text that reads back exactly; empty for NaN.
void WriteCell(double value, std::string& cell) {
  cell.clear();
  if (std::isnan(value)) return;
  char text[32];
  cell.assign(text, std::to_chars(text, text + sizeof text, value).ptr);
}

}  // namespace

MemoryTable MemoryTable::ReadCsv(const std::string& path) {
  MemoryTable table;
  CsvReader reader(path);
  table.name_ = reader.GetName();
  std::optional<CsvHeader> header;
  reader.ReadAll([&](std::uint64_t row, const CsvReader::Record& record) {
    if (!header) {
      header.emplace(table.name_, row, record);
      table.header_row_ = row;
      for (const std::string& name : record) table.columns_.push_back({name, false, {}, {}, {}});
      return;
    }
    header->CheckSize(row, record);
    for (std::size_t k = 0; k < table.columns_.size(); ++k)
      table.columns_[k].texts.push_back(record[k]);
    table.rows_.push_back(row);
  });
  if (!header) throw Refusal(table.name_ + ": no header row");
  table.num_rows_ = table.rows_.size();
  table.format_ = reader.DescribeFormat();
  table.number_format_ = reader.GetNumberFormat();
  const auto& units = reader.GetUnits();
  for (std::size_t k = 0; k < std::min(units.size(), table.columns_.size()); ++k)
    table.columns_[k].unit = UnitOf(units[k]);
  return table;
}

void MemoryTable::Add(Column column) {
  const std::size_t n = column.is_numbers ? column.numbers.size() : column.texts.size();
  if (column.name.empty()) throw Refusal("a column needs a name");
  for (const Column& known : columns_)
    if (known.name == column.name)
      throw Refusal("the table has a column " + Quoted(column.name) + " already");
  if (!columns_.empty() && n != num_rows_)
    throw Refusal("the column " + Quoted(column.name) + " has " + std::to_string(n) +
                  " values, but the table has " + std::to_string(num_rows_) + " rows");
  columns_.push_back(std::move(column));
  num_rows_ = n;
}

void MemoryTable::AddNumbers(std::string name, std::vector<double> values) {
  Add({std::move(name), true, std::move(values), {}, {}});
}

void MemoryTable::AddTexts(std::string name, std::vector<std::string> values) {
  Add({std::move(name), false, {}, std::move(values), {}});
}

void MemoryTable::SetUnit(const std::string& name, std::string unit) {
  std::vector<std::string> names;
  for (Column& column : columns_) {
    if (column.name == name) {
      column.unit = std::move(unit);
      return;
    }
    names.push_back(column.name);
  }
  throw Refusal("the table has no column " + Quoted(name) + "; " +
                NameHint(name, names, "the columns are"));
}

Result MemoryTable::Describe() const {
  Result result;
  Json::Value& document = result.document;
  document["name"] = name_;
  document["rows"] = static_cast<Json::UInt64>(num_rows_);
  document["notes"] = Json::Value(Json::arrayValue);
  if (!format_.empty()) document["notes"].append(format_);
  document["columns"] = Json::Value(Json::arrayValue);
  NumberFormat format = number_format_;
  for (const Column& column : columns_) {
    std::vector<double> numbers = column.numbers;
    bool is_numbers = true;
    for (const std::string& cell : column.texts) {
      const CsvNumber number = format.Read(cell);
      const bool is_missing = IsMissing(cell);
      is_numbers = is_numbers && (is_missing || number.kind == CsvNumber::Kind::kNumber);
      numbers.push_back(is_missing ? std::nan("") : number.value);
    }
    std::size_t num_missing = 0;
    for (std::size_t i = 0; i < num_rows_; ++i)
      if (column.is_numbers ? std::isnan(numbers[i]) : IsMissing(column.texts[i])) ++num_missing;
    Json::Value json;
    json["name"] = column.name;
    json["kind"] = is_numbers ? "numbers" : "texts";
    json["missing"] = static_cast<Json::UInt64>(num_missing);
    if (!column.unit.empty()) json["unit"] = column.unit;
    document["columns"].append(json);
    if (is_numbers) result.arrays.push_back({column.name, num_rows_, 1, std::move(numbers)});
  }
  return result;
}

MemoryTableSource::MemoryTableSource(const MemoryTable& table)
    : table_(table), numbers_(table.number_format_) {
  // In brackets, any text is a unit.
  for (const auto& column : table.columns_)
    units_.push_back(column.unit.empty() ? "" : '[' + column.unit + ']');
}

void MemoryTableSource::ReadAll(const Handler& handler) {
  Record record;
  for (const auto& column : table_.columns_) record.push_back(column.name);
  if (record.empty()) throw Refusal(table_.name_ + ": no columns");
  handler(table_.header_row_, record);
  for (std::size_t i = 0; i < table_.num_rows_; ++i) {
    for (std::size_t k = 0; k < record.size(); ++k) {
      const auto& column = table_.columns_[k];
      if (column.is_numbers)
        WriteCell(column.numbers[i], record[k]);
      else
        record[k] = column.texts[i];
    }
    handler(table_.rows_.empty() ? i : table_.rows_[i], record);
  }
}

}  // namespace corvath::study
