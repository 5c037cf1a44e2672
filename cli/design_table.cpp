#include "design_table.h"

#include "commands.h"
#include "csv_cell.h"
#include "csv_header.h"
#include "csv_reader.h"
#include "design/indexed_name.h"
#include "foundation/text.h"
#include "name_hint.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace cli {
namespace {

using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;
using Eigen::Index;

std::vector<std::wstring> ToWide(const std::vector<std::string>& names) {
  std::vector<std::wstring> wide;
  for (const std::string& name : names) wide.push_back(FromUtf8(name));
  return wide;
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// One column of the table, cell by cell.
struct Column {
  std::size_t position;
  std::vector<double> values;
  std::size_t num_failed = 0;
  std::uint64_t first_failed_row = 0;
  std::string first_failed;  ///< its text
};

class Builder {
 public:
  Builder(CsvHeader header, const std::vector<std::string>& inputs,
          const std::vector<std::string>& responses)
      : header_(std::move(header)) {
    for (const auto& name : inputs) inputs_.push_back(MakeColumn(header_.Find(name, "input")));
    for (const auto& name : responses)
      responses_.push_back(MakeColumn(header_.Find(name, "response")));
  }

  void Add(std::uint64_t row, const CsvReader::Record& record) {
    header_.CheckSize(row, record);
    for (Column& input : inputs_) AddInput(row, record[input.position], input);
    for (Column& response : responses_) AddResponse(row, record[response.position], response);
    rows_.push_back(row);
  }

  void Finish(DesignTable& table) {
    table.data.points = ToMatrix(inputs_);
    table.data.values = ToMatrix(responses_);
    table.rows = std::move(rows_);
    for (const Column& response : responses_) {
      if (response.num_failed == 0) continue;
      const std::string place = header_.Place(response.first_failed_row, response.position) + ": ";
      if (response.num_failed == table.rows.size())
        throw Refusal(place + Quoted(response.first_failed) +
                      " is not a number, nor is any other cell of the column");
      table.notes.push_back(place + Quoted(response.first_failed) +
                            " is not a number: " + std::to_string(response.num_failed) + " of " +
                            std::to_string(table.rows.size()) +
                            " designs failed for this response");
    }
  }

 private:
  static Column MakeColumn(std::size_t position) {
    Column column;
    column.position = position;
    return column;
  }

  [[noreturn]] void Refuse(std::uint64_t row, const Column& column, const std::string& what) const {
    throw Refusal(header_.Place(row, column.position) + ": " + what);
  }

  void AddInput(std::uint64_t row, const std::string& cell, Column& input) const {
    const CsvNumber number = ReadNumber(cell);
    if (number.kind != CsvNumber::Kind::kNumber) Refuse(row, input, RefusalText(cell, number.kind));
    if (!std::isfinite(number.value)) Refuse(row, input, Quoted(cell) + " is not finite");
    input.values.push_back(number.value);
  }

  void AddResponse(std::uint64_t row, const std::string& cell, Column& response) const {
    const CsvNumber number = ReadNumber(cell);
    // A table of decimal commas would count as one failed design after the other.
    if (number.kind == CsvNumber::Kind::kDecimalComma)
      Refuse(row, response, RefusalText(cell, number.kind));
    if (number.kind == CsvNumber::Kind::kNumber && std::isfinite(number.value)) {
      response.values.push_back(number.value);
      return;
    }
    response.values.push_back(std::numeric_limits<double>::quiet_NaN());
    if (response.num_failed++ > 0) return;
    response.first_failed_row = row;
    response.first_failed = cell;
  }

  /// Empties the columns: a table stands in memory once.
  Eigen::MatrixXd ToMatrix(std::vector<Column>& columns) const {
    const auto n = static_cast<Index>(rows_.size());
    Eigen::MatrixXd matrix(n, static_cast<Index>(columns.size()));
    for (Index k = 0; k < matrix.cols(); ++k) {
      std::vector<double>& values = columns[static_cast<std::size_t>(k)].values;
      matrix.col(k) = Eigen::Map<const Eigen::VectorXd>(values.data(), n);
      std::vector<double>().swap(values);
    }
    return matrix;
  }

  CsvHeader header_;
  std::vector<Column> inputs_;
  std::vector<Column> responses_;
  std::vector<std::uint64_t> rows_;
};

}  // namespace

std::string DesignTable::Explain(const corvath::training::TrainingError& error) const {
  std::string place = file;
  if (error.GetRow()) {
    const auto row = static_cast<std::size_t>(*error.GetRow());
    if (row < rows.size()) place += ": row " + std::to_string(rows[row]);
  }
  if (!error.GetColumn().empty())
    place += (error.GetRow() ? ", column " : ": column ") + Quoted(ToUtf8(error.GetColumn()));
  return place + ": " + ToUtf8(error.GetMessage());
}

std::vector<std::string> ParseNames(const std::vector<std::string>& lists, const char* option) {
  std::vector<std::string> names;
  for (const std::string& list : lists) {
    CsvReader::Record record = ParseRecord(list, option);
    if (record.empty()) record.emplace_back();
    for (std::string& name : record) {
      if (name.empty()) throw Refusal(std::string(option) + ": an empty name in " + Quoted(list));
      if (Contains(names, name))
        throw Refusal(std::string(option) + ": " + Quoted(name) + " stands there twice");
      names.push_back(std::move(name));
    }
  }
  return names;
}

DesignTable ReadDesignTable(const std::string& file, const std::vector<std::string>& inputs,
                            const std::vector<std::string>& responses,
                            const std::vector<std::string>& discrete) {
  for (const std::string& name : responses)
    if (Contains(inputs, name)) throw Refusal(Quoted(name) + " is both an input and a response");
  for (const std::string& name : responses) {
    const auto parts = corvath::algorithm::datatypes::SplitIndexedName(FromUtf8(name));
    const std::string base = ToUtf8(parts.base);
    if (parts.GetIndex() && (Contains(inputs, base) || Contains(responses, base)))
      throw Refusal(Quoted(name) + " is an element of the vector " + Quoted(base) +
                    ", which is a column of its own");
  }
  for (const std::string& name : discrete)
    if (!Contains(inputs, name))
      throw Refusal("--discrete: " + Quoted(name) + " is no input; " +
                    NameHint(name, inputs, "the inputs are"));
  DesignTable table;
  table.data.inputs = ToWide(inputs);
  table.data.responses = ToWide(responses);
  table.data.discrete = ToWide(discrete);
  CsvReader reader(file);
  table.file = reader.GetName();
  std::optional<Builder> builder;
  reader.ReadAll([&](std::uint64_t row, const CsvReader::Record& record) {
    if (builder)
      builder->Add(row, record);
    else
      builder.emplace(CsvHeader(table.file, row, record), inputs, responses);
  });
  if (!builder) throw Refusal(table.file + ": no header row");
  builder->Finish(table);
  if (table.rows.empty()) throw Refusal(table.file + ": a header, but no rows of designs below it");
  return table;
}

}  // namespace cli
