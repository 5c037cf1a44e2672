#include "study/table/design_table.h"

#include "foundation/constants.h"
#include "foundation/text.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/csv_header.h"
#include "study/table/csv_reader.h"
#include "study/table/date_text.h"
#include "study/table/unit_text.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace corvath::study {
namespace {

using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;
using Eigen::Index;

using math::kNaN;

std::vector<std::wstring> ToWide(const std::vector<std::string>& names) {
  std::vector<std::wstring> wide;
  wide.reserve(names.size());
  for (const std::string& name : names) wide.push_back(FromUtf8(name));
  return wide;
}

/// The first cell of a kind.
struct Sighting {
  std::size_t count = 0;
  std::uint64_t row = 0;
  std::string cell;

  void Note(std::uint64_t in_row, const std::string& text) {
    if (count++ > 0) return;
    row = in_row;
    cell = text;
  }
};

/// One column of the table, cell by cell.
struct Column {
  std::size_t position;
  std::string name;
  bool is_date = false;
  std::vector<double> values;                ///< of words, their positions in `words`
  Sighting failed;                           ///< of a response
  Sighting numbers;                          ///< of an input
  Sighting texts;                            ///< likewise
  std::map<std::string, std::size_t> words;  ///< in the order of their appearance
  std::vector<double> month_first;  ///< of dates with slashes, the other reading; as `values`
  Sighting slashes;                 ///< dates that may be day/month or month/day
};

class Builder {
 public:
  Builder(TableSource& reader, CsvHeader header, const ColumnChoice& choice, bool skip_incomplete)
      : reader_(reader),
        header_(std::move(header)),
        skip_incomplete_(skip_incomplete),
        wording_(choice.wording) {
    const auto add = [&](const std::string& name, const char* kind, std::vector<Column>& columns) {
      Column column;
      column.position = header_.Find(name, kind);
      column.name = name;
      column.is_date = Contains(choice.dates, name);
      columns.push_back(std::move(column));
    };
    for (const auto& name : choice.inputs) add(name, "input", inputs_);
    for (const auto& name : choice.responses) add(name, "response", responses_);
  }

  void Add(std::uint64_t row, const CsvReader::Record& record) {
    header_.CheckSize(row, record);
    if (!IsComplete(row, record)) return;
    for (Column& input : inputs_) AddInput(row, record[input.position], input);
    for (Column& response : responses_) AddResponse(row, record[response.position], response);
    rows_.push_back(row);
  }

  void Finish(DesignTable& table) {
    if (incomplete_.count > 0)
      table.notes.push_back(incomplete_place_ + ": " + Quoted(incomplete_.cell) +
                            " is missing: " + std::to_string(incomplete_.count) + " of " +
                            std::to_string(rows_.size() + incomplete_.count) +
                            " rows left out, since they lack an input");
    if (rows_.empty() && incomplete_.count > 0)
      throw Refusal(table.notes.back() + "; no design is left");
    if (rows_.empty()) throw Refusal(table.file + ": a header, but no rows of designs below it");
    for (Column& input : inputs_) {
      if (input.is_date)
        FinishDates(input, table);
      else if (input.texts.count > 0)
        FinishWords(input, table);
    }
    for (Column& response : responses_)
      if (response.is_date) FinishDates(response, table);
    AddUnits(table);
    table.data.points = ToMatrix(inputs_);
    table.data.values = ToMatrix(responses_);
    table.rows = std::move(rows_);
    for (const Column& response : responses_) {
      if (response.failed.count == 0) continue;
      const std::string place = header_.Place(response.failed.row, response.position) + ": ";
      const char* const kind = response.is_date ? " is not a date" : " is not a number";
      if (response.failed.count == table.rows.size())
        throw Refusal(place + Quoted(response.failed.cell) + kind +
                      ", nor is any other cell of the column");
      table.notes.push_back(place + Quoted(response.failed.cell) + kind + ": " +
                            std::to_string(response.failed.count) + " of " +
                            std::to_string(table.rows.size()) +
                            " designs failed for this response");
    }
  }

 private:
  [[noreturn]] void Refuse(std::uint64_t row, const Column& column, const std::string& what) const {
    throw Refusal(header_.Place(row, column.position) + ": " + what);
  }

  std::string Option(const char* key) const { return OptionName(wording_, key); }

  /// Whether no input is missing. What is missing is refused or counted.
  bool IsComplete(std::uint64_t row, const CsvReader::Record& record) {
    for (const Column& input : inputs_) {
      const std::string& cell = record[input.position];
      if (!IsMissing(cell)) continue;
      if (!skip_incomplete_)
        Refuse(row, input,
               (cell.empty() ? "empty" : Quoted(cell) + " is missing") +
                   ", and each input needs a value; " + Option("skip_incomplete") +
                   " leaves such rows out");
      if (incomplete_.count == 0) incomplete_place_ = header_.Place(row, input.position);
      incomplete_.Note(row, cell);
      return false;
    }
    return true;
  }

  void AddInput(std::uint64_t row, const std::string& cell, Column& input) const {
    if (input.is_date) {
      if (!AddDate(row, cell, input)) Refuse(row, input, DateRefusalText(cell));
      return;
    }
    const CsvNumber number = reader_.ReadNumber(cell);
    if (number.kind == CsvNumber::Kind::kText) {
      AddWord(row, cell, input);
      return;
    }
    if (number.kind != CsvNumber::Kind::kNumber) Refuse(row, input, RefusalText(cell, number.kind));
    if (!std::isfinite(number.value)) Refuse(row, input, Quoted(cell) + " is not finite");
    input.numbers.Note(row, cell);
    if (input.texts.count > 0) RefuseMixed(input);
    input.values.push_back(number.value);
  }

  /// "5 mm", "5mm" or "5 %": a number with its unit. "2A" may be a name.
  static bool IsQuantity(const std::string& cell) {
    const std::string_view text = Trimmed(cell);
    const std::size_t end = text.find_first_not_of("0123456789.,+-");
    if (end == 0 || end == std::string_view::npos) return false;
    const std::string_view unit = text.substr(end);
    return (unit.size() > 1 || unit == "%") && !UnitOf(unit).empty();
  }

  void AddWord(std::uint64_t row, const std::string& cell, Column& input) const {
    if (IsQuantity(cell))
      Refuse(row, input,
             Quoted(cell) +
                 " is a number with a unit; write the unit into the header "
                 "or into a row below it");
    input.texts.Note(row, cell);
    if (input.numbers.count > 0) RefuseMixed(input);
    const auto word = input.words.emplace(Trimmed(cell), input.words.size()).first;
    // Far more than may be: the count in the message is a true one for all but the largest tables.
    constexpr std::size_t kMaxKept = 100000;
    if (input.words.size() > kMaxKept) RefuseWords(input);
    input.values.push_back(static_cast<double>(word->second));
  }

  [[noreturn]] void RefuseMixed(const Column& input) const {
    // The second kind to come is the odd one.
    const bool odd_text = input.texts.row > input.numbers.row;
    const Sighting& odd = odd_text ? input.texts : input.numbers;
    const Sighting& other = odd_text ? input.numbers : input.texts;
    Refuse(odd.row, input,
           Quoted(odd.cell) + (odd_text ? " is not a number" : " is a number") + ", but row " +
               std::to_string(other.row) + " has " + Quoted(other.cell) +
               "; an input is all numbers or all words (NA for missing values)");
  }

  [[noreturn]] void RefuseWords(const Column& input) const {
    Refuse(input.texts.row, input,
           Quoted(input.texts.cell) + " is not a number, and " +
               std::to_string(input.words.size()) + " different words in " +
               std::to_string(input.values.size()) +
               " rows are too many for a discrete input (at most " + std::to_string(kMaxWords) +
               ", each in two rows on average); leave the column out (" + Option("ignored") +
               "), or " + Option("dates") + " if they are dates");
  }

  void AddResponse(std::uint64_t row, const std::string& cell, Column& response) const {
    if (response.is_date) {
      if (AddDate(row, cell, response)) return;
    } else {
      const CsvNumber number = reader_.ReadNumber(cell);
      // A table of decimal commas would count as one failed design after the other.
      if (number.kind == CsvNumber::Kind::kDecimalComma ||
          number.kind == CsvNumber::Kind::kDecimalPoint ||
          number.kind == CsvNumber::Kind::kAmbiguous)
        Refuse(row, response, RefusalText(cell, number.kind));
      if (number.kind == CsvNumber::Kind::kNumber && std::isfinite(number.value)) {
        response.values.push_back(number.value);
        return;
      }
    }
    response.values.push_back(kNaN);
    if (response.is_date) response.month_first.push_back(kNaN);
    response.failed.Note(row, cell);
  }

  /// @return  whether the cell is a date
  static bool AddDate(std::uint64_t row, const std::string& cell, Column& column) {
    const auto date = ReadDate(cell);
    if (!date) return false;
    column.values.push_back(date->days);
    column.month_first.push_back(date->month_first.value_or(date->days));
    if (date->month_first) column.slashes.Note(row, cell);
    return true;
  }

  /// Decides between day/month and month/day: the one that makes all cells dates.
  void FinishDates(Column& column, DesignTable& table) const {
    TableColumn& told = table.columns[column.name];
    told.is_date = true;
    bool day_first = true;
    bool month_first = true;
    for (std::size_t i = 0; i < column.values.size(); ++i) {
      if (std::isnan(column.values[i]) && std::isnan(column.month_first[i])) continue;  // failed
      day_first = day_first && !std::isnan(column.values[i]);
      month_first = month_first && !std::isnan(column.month_first[i]);
    }
    const std::string remedy = "; write 2024-01-31 in all rows";
    if (column.slashes.count > 0) {
      if (day_first && month_first)
        Refuse(column.slashes.row, column,
               Quoted(column.slashes.cell) +
                   " may be day/month or month/day, and no other row of "
                   "the column tells which" +
                   remedy);
      if (!day_first && !month_first)
        Refuse(column.slashes.row, column,
               Quoted(column.slashes.cell) +
                   " is one of dates that are neither all day/month nor "
                   "all month/day" +
                   remedy);
      told.slashes =
          day_first ? TableColumn::Slashes::kDayFirst : TableColumn::Slashes::kMonthFirst;
      if (month_first) column.values = column.month_first;
    }
    table.notes.push_back(
        header_.Place(rows_.front(), column.position) + ": dates are days since " + kDateOrigin +
        (column.slashes.count == 0 ? ""
                                   : std::string(", with slashes as ") +
                                         (day_first ? "day/month/year" : "month/day/year")));
  }

  /// Gives the words their codes.
  void FinishWords(Column& input, DesignTable& table) const {
    if (input.words.size() > kMaxWords || 2 * input.words.size() > input.values.size())
      RefuseWords(input);
    std::vector<double> codes(input.words.size());
    std::vector<std::string> words;
    for (const auto& [word, position] : input.words) {  // ascending
      codes[position] = static_cast<double>(words.size());
      words.push_back(word);
    }
    for (double& value : input.values) value = codes[static_cast<std::size_t>(value)];
    table.notes.push_back(header_.Place(input.texts.row, input.position) +
                          ": words, which become a discrete input with the codes " +
                          WordsText(words));
    table.columns[input.name].words = std::move(words);
    const std::wstring name = FromUtf8(input.name);
    auto& discrete = table.data.discrete;
    if (std::find(discrete.begin(), discrete.end(), name) == discrete.end())
      discrete.push_back(name);
  }

  void AddUnits(DesignTable& table) const {
    const CsvReader::Record& units = reader_.GetUnits();
    for (const auto* columns : {&inputs_, &responses_})
      for (const Column& column : *columns) {
        if (column.position >= units.size()) continue;
        const std::string unit = UnitOf(units[column.position]);
        if (!unit.empty()) table.units[column.name] = unit;
      }
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

  TableSource& reader_;
  CsvHeader header_;
  bool skip_incomplete_;
  Wording wording_;
  std::vector<Column> inputs_;
  std::vector<Column> responses_;
  std::vector<std::uint64_t> rows_;
  Sighting incomplete_;  ///< rows that lack an input
  std::string incomplete_place_;
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

DesignTable ReadDesignTable(TableSource& reader, const ColumnChoice& choice, bool skip_incomplete) {
  DesignTable table;
  table.file = reader.GetName();
  std::optional<Builder> builder;
  reader.ReadAll([&](std::uint64_t row, const CsvReader::Record& record) {
    if (builder) {
      builder->Add(row, record);
      return;
    }
    const ColumnChoice resolved = choice.Resolve(record);
    table.data.inputs = ToWide(resolved.inputs);
    table.data.responses = ToWide(resolved.responses);
    table.data.discrete = ToWide(resolved.discrete);
    builder.emplace(reader, CsvHeader(table.file, row, record), resolved, skip_incomplete);
  });
  if (!builder) throw Refusal(table.file + ": no header row");
  const std::string format = reader.DescribeFormat();
  if (!format.empty()) table.notes.push_back(table.file + ": " + format);
  builder->Finish(table);
  return table;
}

}  // namespace corvath::study
