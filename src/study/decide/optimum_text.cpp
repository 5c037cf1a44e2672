#include "study/decide/optimum_text.h"

#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "study/describe/json_text.h"
#include "study/describe/text_table.h"
#include "study/table/csv_cell.h"

#include <cmath>

namespace corvath::study {
namespace {

using Align = TextTable::Align;
using analysis::OptimumStatus;
using utils::ToUtf8;

/// A prediction is trusted where no fewer than this share of the analysed designs lie more lonely,
/// and the model explains at least a half of what the designs around show.
constexpr double kLeastRank = 0.05;
constexpr double kLeastCoP = 0.5;

std::string StatusText(OptimumStatus status) {
  switch (status) {
    case OptimumStatus::kOptimal:
      return "optimal";
    case OptimumStatus::kFeasible:
      return "feasible";
    case OptimumStatus::kInfeasible:
      return "infeasible";
    default:
      return "failed";
  }
}

std::string OrDash(double value) {
  return std::isfinite(value) ? Short(value) : "-";
}

std::string Percent(double share) {
  return std::isfinite(share) ? Short(std::round(1000.0 * share) / 10.0) + " %" : "-";
}

bool IsThin(const analysis::PredictionTrust& trust) {
  return trust.density_rank < kLeastRank;
}
bool IsPoor(const analysis::PredictionTrust& trust) {
  return trust.local_cop < kLeastCoP;
}

void AddNotes(const std::vector<std::string>& notes, Json::Value& document, std::ostream& out) {
  document["notes"] = Json::Value(Json::arrayValue);
  for (const std::string& note : notes) {
    document["notes"].append(note);
    out << note << '\n';
  }
}

}  // namespace

OptimumText::OptimumText(const Project& project, const analysis::DesignTask& task)
    : task_(task),
      model_(task.GetModel()),
      columns_(TableColumns::FromProject(project.GetRecord())) {
  const auto& parameters = project.GetRecord().GetParameterManager();
  for (const auto& input : model_.GetInputs()) {
    inputs_.push_back(ToUtf8(input.name));
    const auto* const parameter = parameters.FindParameter(input.name);
    units_.push_back(parameter == nullptr ? "" : ToUtf8(parameter->GetUnit()));
  }
  for (const auto& quantity : model_.GetQuantities()) quantities_.push_back(ToUtf8(quantity.name));
}

std::string OptimumText::WordOf(std::size_t input, double value) const {
  const TableColumn* const column = columns_.Find(inputs_[input]);
  return column == nullptr ? "" : column->WordOf(value);
}

/// A number, or the word of a code.
std::string OptimumText::ValueText(std::size_t input, double value) const {
  const std::string word = WordOf(input, value);
  return word.empty() ? Short(value) : word;
}

/// The columns of inputs, to which others are added.
void OptimumText::StartTable(Optimization& result) const {
  result.columns = inputs_;
  for (const std::string& name : inputs_) {
    const TableColumn* const column = columns_.Find(name);
    result.words.push_back(column == nullptr ? std::vector<std::string>() : column->words);
  }
}

Json::Value OptimumText::InputsJson(const Eigen::RowVectorXd& x) const {
  Json::Value object(Json::objectValue);
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    const double value = x(static_cast<Eigen::Index>(i));
    const std::string word = WordOf(i, value);
    object[inputs_[i]] = word.empty() ? JsonNumber(value) : Json::Value(word);
  }
  return object;
}

Json::Value OptimumText::QuantitiesJson(const Eigen::RowVectorXd& values) const {
  Json::Value object(Json::objectValue);
  for (std::size_t k = 0; k < quantities_.size(); ++k)
    object[quantities_[k]] = JsonNumber(values(static_cast<Eigen::Index>(k)));
  return object;
}

std::string OptimumText::RefusalOf(const std::string& limit, double missing,
                                   bool with_scatter) const {
  return "no design keeps all limits; the least that is missing is " + Short(missing) + " of " +
         Quoted(limit) + (with_scatter ? ", scatter included" : "");
}

Json::Value OptimumText::OptimumJson(const analysis::Optimum& optimum) const {
  const analysis::DesignReport& design = optimum.design;
  Json::Value document(Json::objectValue);
  document["status"] = StatusText(optimum.status);
  document["searches"] = Json::Int64(optimum.num_searches);
  document["optima"] = Json::Int64(optimum.num_optima);
  if (optimum.status == OptimumStatus::kFailed) return document;
  const auto& objective = task_.GetObjectives().front();
  document["objective"]["name"] = ToUtf8(objective.name);
  document["objective"]["sense"] = objective.maximize ? "maximize" : "minimize";
  document["objective"]["value"] = JsonNumber(optimum.objectives(0));
  document["inputs"] = InputsJson(design.inputs);
  document["quantities"] = QuantitiesJson(design.quantities);
  document["errors"] = QuantitiesJson(design.errors);
  document["limits"] = Json::Value(Json::objectValue);
  for (std::size_t j = 0; j < optimum.limits.size(); ++j) {
    const auto& state = optimum.limits[j];
    Json::Value& limit = document["limits"][ToUtf8(task_.GetLimits()[j].name)];
    limit["reserve"] = JsonNumber(state.reserve);
    limit["active"] = state.is_active;
    limit["multiplier"] = JsonNumber(state.multiplier);
    limit["error"] = JsonNumber(state.error);
  }
  if (optimum.status == OptimumStatus::kInfeasible) {
    const auto worst = static_cast<std::size_t>(optimum.worst_limit);
    document["violation"]["limit"] = ToUtf8(task_.GetLimits()[worst].name);
    document["violation"]["by"] = JsonNumber(-optimum.limits[worst].reserve);
  }
  document["bounds"] = Json::Value(Json::objectValue);
  for (const auto& state : optimum.bounds) {
    Json::Value& bound = document["bounds"][inputs_[static_cast<std::size_t>(state.input)]];
    bound["end"] = state.is_upper ? "upper" : "lower";
    bound["multiplier"] = JsonNumber(state.multiplier);
  }
  bool is_trusted = true;
  document["trust"] = Json::Value(Json::objectValue);
  for (const auto& trust : design.trust) {
    Json::Value& response =
        document["trust"][quantities_[static_cast<std::size_t>(trust.response)]];
    response["local_cop"] = JsonNumber(trust.local_cop);
    response["density"] = JsonNumber(trust.density);
    response["density_rank"] = JsonNumber(trust.density_rank);
    is_trusted = is_trusted && !IsThin(trust) && !IsPoor(trust);
  }
  document["trusted"] = is_trusted;
  const analysis::StudyDesigns& designs = model_.GetDesigns();
  document["nearest"] = Json::Value(Json::arrayValue);
  for (const auto& neighbour : design.nearest) {
    Json::Value entry(Json::objectValue);
    entry["design"] = ToUtf8(designs.numbers[static_cast<std::size_t>(neighbour.row)]);
    entry["distance"] = JsonNumber(neighbour.distance);
    entry["inputs"] = InputsJson(designs.inputs.row(neighbour.row));
    entry["quantities"] = QuantitiesJson(designs.values.row(neighbour.row));
    document["nearest"].append(entry);
  }
  return document;
}

void OptimumText::PrintInputs(const analysis::Optimum& optimum, std::ostream& out) const {
  TextTable table;
  table.AddColumn("name", Align::kLeft);
  for (const char* title : {"value", "from", "to"}) table.AddColumn(title, Align::kRight);
  table.AddColumn("at", Align::kLeft);
  table.AddColumn("gain per unit", Align::kRight);
  table.AddColumn("unit", Align::kLeft);
  const analysis::NonlinearProgram& program = task_.GetProgram();
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    const auto column = static_cast<Eigen::Index>(i);
    std::string at, gain;
    for (const auto& bound : optimum.bounds)
      if (bound.input == column) {
        at = bound.is_upper ? "upper bound" : "lower bound";
        gain = Short(bound.multiplier);
      }
    if (program.lower(column) == program.upper(column)) at = "held";
    table.AddRow({inputs_[i], ValueText(i, optimum.design.inputs(column)),
                  ValueText(i, program.lower(column)), ValueText(i, program.upper(column)), at,
                  gain, units_[i]});
  }
  out << "\nInputs\n";
  table.Print(out, "  ");
}

void OptimumText::PrintLimits(const analysis::Optimum& optimum, std::ostream& out) const {
  if (optimum.limits.empty()) return;
  TextTable table;
  table.AddColumn("name", Align::kLeft);
  table.AddColumn("reserve", Align::kRight);
  table.AddColumn("error", Align::kRight);
  table.AddColumn("state", Align::kLeft);
  table.AddColumn("gain per unit", Align::kRight);
  for (std::size_t j = 0; j < optimum.limits.size(); ++j) {
    const auto& state = optimum.limits[j];
    const bool is_broken = optimum.status == OptimumStatus::kInfeasible && state.reserve < 0.0;
    table.AddRow({ToUtf8(task_.GetLimits()[j].name), Short(state.reserve), OrDash(state.error),
                  is_broken         ? "broken"
                  : state.is_active ? "active"
                                    : "kept",
                  state.is_active && !is_broken ? Short(state.multiplier) : ""});
  }
  out << "\nLimits, with what is left of each and the model's error to expect in it\n";
  table.Print(out, "  ");
  if (task_.GetRobust() > 0.0)
    out << "  " << Short(task_.GetRobust())
        << " standard deviations of the scatter are taken off what is left.\n";
}

void OptimumText::PrintQuantities(const analysis::DesignReport& design, std::ostream& out) const {
  TextTable table;
  table.AddColumn("name", Align::kLeft);
  for (const char* title : {"value", "error", "local CoP", "density", "more lonely"})
    table.AddColumn(title, Align::kRight);
  for (std::size_t k = 0; k < quantities_.size(); ++k) {
    const auto column = static_cast<Eigen::Index>(k);
    std::vector<std::string> row = {quantities_[k],
                                    Short(design.quantities(column)),
                                    OrDash(design.errors(column)),
                                    "",
                                    "",
                                    ""};
    for (const auto& trust : design.trust)
      if (trust.response == column) {
        row[3] = OrDash(trust.local_cop);
        row[4] = OrDash(trust.density);
        row[5] = Percent(trust.density_rank);
      }
    table.AddRow(row);
  }
  out << "\nPredictions, with the error to expect (one standard deviation) and, of those that "
         "matter,"
         "\nthe local CoP, the density of analysed designs and how many of these lie more lonely\n";
  table.Print(out, "  ");
}

void OptimumText::PrintNearest(const analysis::DesignReport& design, std::ostream& out) const {
  if (design.nearest.empty()) return;
  constexpr std::size_t kMaxColumns = 6;
  TextTable table;
  table.AddColumn("design", Align::kRight);
  table.AddColumn("distance", Align::kRight);
  std::vector<Eigen::Index> shown;
  for (const auto& objective : task_.GetObjectives())
    if (const auto found = model_.FindQuantity(objective.name)) shown.push_back(*found);
  for (const auto& limit : task_.GetLimits())
    if (const auto found = model_.FindQuantity(limit.name)) shown.push_back(*found);
  if (shown.size() > kMaxColumns) shown.resize(kMaxColumns);
  for (const Eigen::Index column : shown)
    table.AddColumn(quantities_[static_cast<std::size_t>(column)], Align::kRight);
  const analysis::StudyDesigns& designs = model_.GetDesigns();
  for (const auto& neighbour : design.nearest) {
    std::vector<std::string> row = {
        ToUtf8(designs.numbers[static_cast<std::size_t>(neighbour.row)]),
        Percent(neighbour.distance)};
    for (const Eigen::Index column : shown)
      row.push_back(OrDash(designs.values(neighbour.row, column)));
    table.AddRow(row);
  }
  out << "\nNearest analysed designs, by the mean difference of the inputs in shares of their "
         "ranges\n";
  table.Print(out, "  ");
}

std::vector<std::string> OptimumText::TrustNotes(const analysis::DesignReport& design) const {
  const auto names_of = [&](bool (*is_meant)(const analysis::PredictionTrust&)) {
    std::string names;
    std::size_t count = 0;
    for (const auto& trust : design.trust) {
      if (!is_meant(trust)) continue;
      names += (count++ > 0 ? ", " : "") + quantities_[static_cast<std::size_t>(trust.response)];
    }
    return count > 3 ? std::to_string(count) + " of the responses" : names;
  };
  std::vector<std::string> notes;
  if (const std::string thin = names_of(IsThin); !thin.empty())
    notes.push_back("The design lies where few designs were analysed (" + thin +
                    "): analyse it before you rely on it.");
  if (const std::string poor = names_of(IsPoor); !poor.empty())
    notes.push_back("Around the design the model explains less than a half of what was analysed (" +
                    poor + "): analyse it before you rely on it.");
  return notes;
}

Optimization OptimumText::Describe(const analysis::Optimum& optimum) const {
  Optimization result;
  result.status = StatusText(optimum.status);
  result.success =
      optimum.status == OptimumStatus::kOptimal || optimum.status == OptimumStatus::kFeasible;
  result.document = OptimumJson(optimum);
  utils::TextStream out;
  std::vector<std::string> notes;
  for (const auto& note : optimum.notes) notes.push_back(ToUtf8(note));
  if (optimum.status == OptimumStatus::kFailed) {
    result.refusal = notes.empty() ? "no design has a value" : notes.front();
    AddNotes(notes, result.document, out);
    return result;
  }
  const auto& objective = task_.GetObjectives().front();
  const std::string value = ToUtf8(objective.name) + " = " + Short(optimum.objectives(0));
  if (optimum.status == OptimumStatus::kInfeasible) {
    const auto worst = static_cast<std::size_t>(optimum.worst_limit);
    result.refusal = RefusalOf(ToUtf8(task_.GetLimits()[worst].name),
                               -optimum.limits[worst].reserve, task_.GetRobust() > 0.0);
    out << "Infeasible: " << result.refusal << "\nThe design that comes closest: " << value << '\n';
  } else {
    out << (objective.maximize ? "Largest " : "Least ") << value;
    if (optimum.status == OptimumStatus::kFeasible)
      out << ", all limits kept; the search stopped before it was sure that this is the best";
    out << '\n';
  }
  out << "  best of " << optimum.num_searches << " searches";
  if (optimum.num_optima > 0)
    out << ", which found " << optimum.num_optima
        << (optimum.num_optima == 1 ? " optimum" : " different optima");
  out << '\n';
  PrintInputs(optimum, out);
  PrintLimits(optimum, out);
  PrintQuantities(optimum.design, out);
  PrintNearest(optimum.design, out);
  for (const auto& note : TrustNotes(optimum.design)) notes.push_back(note);
  if (!notes.empty()) out << '\n';
  AddNotes(notes, result.document, out);
  result.text = out.str();

  StartTable(result);
  result.columns.insert(result.columns.end(), quantities_.begin(), quantities_.end());
  result.designs.resize(1, static_cast<Eigen::Index>(result.columns.size()));
  result.designs << optimum.design.inputs, optimum.design.quantities;
  return result;
}

Optimization OptimumText::Describe(const analysis::ParetoFront& front,
                                   const analysis::Screening& screening) const {
  Optimization result;
  result.document["searches"] = Json::Int64(front.num_searches);
  if (front.points.empty()) {
    result.status = "infeasible";
    result.document["status"] = result.status;
    const auto breach =
        LargestBreach(task_.GetProgram(), screening.scales, front.nearest.point.columns);
    for (const auto& limit : task_.GetLimits())
      if (breach.limit >= limit.first && breach.limit < limit.first + limit.num_columns) {
        const double missing = -task_.Reserve(limit, front.nearest.point.columns);
        result.refusal = RefusalOf(ToUtf8(limit.name), missing, task_.GetRobust() > 0.0);
        result.document["violation"]["limit"] = ToUtf8(limit.name);
        result.document["violation"]["by"] = JsonNumber(missing);
      }
    result.document["inputs"] = InputsJson(front.nearest.point.x);
    result.document["quantities"] = QuantitiesJson(model_.Evaluate(front.nearest.point.x));
    result.text = "Infeasible: " + result.refusal + '\n';
    return result;
  }
  result.success = true;
  result.status = "front";
  result.document["status"] = result.status;
  StartTable(result);
  result.columns.insert(result.columns.end(), quantities_.begin(), quantities_.end());
  TextTable table;
  std::vector<bool> is_quantity;
  for (const auto& objective : task_.GetObjectives()) {
    const std::string name = ToUtf8(objective.name);
    table.AddColumn(name, Align::kRight);
    is_quantity.push_back(model_.FindQuantity(objective.name).has_value());
    if (!is_quantity.back()) result.columns.push_back(name);  // an expression
  }
  for (const std::string& name : inputs_) table.AddColumn(name, Align::kRight);
  const auto n = static_cast<Eigen::Index>(front.points.size());
  Eigen::MatrixXd points(n, model_.GetNumInputs());
  for (Eigen::Index k = 0; k < n; ++k) points.row(k) = front.points[static_cast<std::size_t>(k)].x;
  const Eigen::MatrixXd values = model_.Evaluate(points);
  result.designs.resize(n, static_cast<Eigen::Index>(result.columns.size()));
  result.designs.leftCols(points.cols()) = points;
  result.designs.middleCols(points.cols(), values.cols()) = values;
  result.document["front"] = Json::Value(Json::arrayValue);
  for (Eigen::Index k = 0; k < n; ++k) {
    const auto& columns = front.points[static_cast<std::size_t>(k)].columns;
    std::vector<std::string> row;
    Json::Value entry(Json::objectValue);
    entry["inputs"] = InputsJson(points.row(k));
    entry["quantities"] = QuantitiesJson(values.row(k));
    Eigen::Index extra = points.cols() + values.cols();
    for (std::size_t i = 0; i < task_.GetObjectives().size(); ++i) {
      const double value = task_.ObjectiveValue(static_cast<Eigen::Index>(i), columns);
      row.push_back(Short(value));
      entry["objectives"][ToUtf8(task_.GetObjectives()[i].name)] = JsonNumber(value);
      if (!is_quantity[i]) result.designs(k, extra++) = value;
    }
    for (std::size_t i = 0; i < inputs_.size(); ++i)
      row.push_back(ValueText(i, points(k, static_cast<Eigen::Index>(i))));
    table.AddRow(row);
    result.document["front"].append(entry);
  }
  utils::TextStream out;
  out << "Pareto front: " << n
      << " designs, of which none is better than another in all objectives\n";
  table.Print(out, "  ");
  std::vector<std::string> notes;
  for (const auto& note : task_.GetNotes()) notes.push_back(ToUtf8(note));
  AddNotes(notes, result.document, out);
  result.text = out.str();
  return result;
}

Optimization OptimumText::Describe(const std::vector<analysis::NextDesign>& designs) const {
  Optimization result;
  result.success = true;
  result.status = "proposed";
  result.document["status"] = result.status;
  result.document["next"] = Json::Value(Json::arrayValue);
  StartTable(result);
  result.designs.resize(static_cast<Eigen::Index>(designs.size()), model_.GetNumInputs());
  TextTable table;
  for (const std::string& name : inputs_) table.AddColumn(name, Align::kRight);
  const bool by_error = !designs.empty() && std::isnan(designs.front().prediction);
  table.AddColumn(by_error ? "error" : "improvement", Align::kRight);
  if (!by_error) table.AddColumn("keeps limits", Align::kRight);
  if (!by_error) table.AddColumn("prediction", Align::kRight);
  for (std::size_t k = 0; k < designs.size(); ++k) {
    const analysis::NextDesign& design = designs[k];
    result.designs.row(static_cast<Eigen::Index>(k)) = design.inputs;
    Json::Value entry(Json::objectValue);
    entry["inputs"] = InputsJson(design.inputs);
    entry[by_error ? "error" : "improvement"] = JsonNumber(design.gain);
    if (!by_error) entry["chance"] = JsonNumber(design.chance);
    if (!by_error) entry["prediction"] = JsonNumber(design.prediction);
    result.document["next"].append(entry);
    std::vector<std::string> row;
    for (std::size_t i = 0; i < inputs_.size(); ++i)
      row.push_back(ValueText(i, design.inputs(static_cast<Eigen::Index>(i))));
    row.push_back(Short(design.gain));
    if (!by_error) row.push_back(Percent(design.chance));
    if (!by_error) row.push_back(Short(design.prediction));
    table.AddRow(row);
  }
  utils::TextStream out;
  out << "Designs to analyse next\n";
  table.Print(out, "  ");
  result.text = out.str();
  return result;
}

}  // namespace corvath::study
