#include "study/analysis/fixed_input.h"

#include "foundation/text.h"
#include "study/describe/text_table.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"
#include "study/table/table_columns.h"

#include <cmath>
#include <string_view>

namespace corvath::study {
namespace {

void RequireState(const analysis::StudyInput& input, double value, const TableColumn* column,
                  const std::string& text) {
  if (!input.IsDiscrete()) return;
  constexpr std::size_t kMostShown = 20;
  std::string states;
  for (std::size_t k = 0; k < input.states.size(); ++k) {
    if (input.states[k] == value) return;
    if (k > kMostShown) continue;
    const std::string word = column == nullptr ? "" : column->WordOf(input.states[k]);
    states += k == 0 ? "" : ", ";
    states += k == kMostShown ? "..." : word.empty() ? Short(input.states[k]) : Quoted(word);
  }
  throw Refusal(Quoted(text) + ": the input takes " + states + " and nothing else");
}

}  // namespace

std::pair<std::string, double> ParseFixed(const Project& project, const analysis::StudyModel& model,
                                          const std::string& text) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos || equals == 0)
    throw Refusal(Quoted(text) + ": NAME=VALUE is wanted, as in load=12");
  const std::string name(Trimmed(std::string_view(text).substr(0, equals)));
  const std::string value(Trimmed(std::string_view(text).substr(equals + 1)));
  const auto input = model.FindInput(utils::FromUtf8(name));
  if (!input)
    throw Refusal("there is no input " + Quoted(name) + "; " +
                  NameHint(name, project.GetInputs(), "the inputs are"));
  const TableColumns columns = TableColumns::FromProject(project.GetRecord());
  const TableColumn* const column = columns.Find(name);
  const CsvNumber read = ReadNumber(value);
  const bool is_number = read.kind == CsvNumber::Kind::kNumber;
  double number = read.value;
  if (column != nullptr && column->IsRead())
    number = column->ReadCell(value, read.value, is_number, name);
  else if (!is_number)
    throw Refusal(Quoted(text) + ": " + RefusalText(value, read.kind));
  if (!std::isfinite(number)) throw Refusal(Quoted(text) + ": that is no finite number");
  RequireState(model.GetInputs()[static_cast<std::size_t>(*input)], number, column, text);
  return {name, number};
}

}  // namespace corvath::study
