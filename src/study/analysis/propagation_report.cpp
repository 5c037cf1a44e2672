#include "study/analysis/propagation_report.h"

#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "study/analysis/quantity_kind.h"
#include "study/analysis/run_analysis.h"
#include "study/describe/help_text.h"
#include "study/describe/json_text.h"
#include "study/describe/text_table.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <numeric>

namespace corvath::study {
namespace {

using analysis::DesignPoint;
using analysis::Interval;
using analysis::LimitRisk;
using analysis::QuantityScatter;
using analysis::SampleScheme;
using Eigen::Index;
using utils::ToUtf8;

constexpr std::pair<const char*, SampleScheme> kSchemes[] = {
    {"latin-hypercube", SampleScheme::kLatinHypercube},
    {"sobol", SampleScheme::kSobol},
    {"monte-carlo", SampleScheme::kMonteCarlo}};
/// Correlations below this are not worth a line for a person.
constexpr double kWeakCorrelation = 0.3;
constexpr std::size_t kMostCorrelations = 20;
/// Coordinates of a design point with less of its beta^2 are told by their number alone.
constexpr double kSmallImportance = 0.01;

const char* SchemeText(SampleScheme scheme) {
  for (const auto& [name, value] : kSchemes)
    if (value == scheme) return name;
  return "";
}

/// "0.05" for 0.05: the shortest text that is this number, for 0.999999 is not 0.9999999.
std::string ProbabilityText(double p) {
  char text[32];
  return std::string(text, std::to_chars(std::begin(text), std::end(text), p).ptr);
}

std::string NumberText(double value, int digits = 4) {
  if (!std::isfinite(value)) return "-";
  utils::TextStream text;
  text.precision(digits);
  text << value;
  return text.str();
}

std::string RangeText(const Interval& interval) {
  return NumberText(interval.low, 3) + " to " + NumberText(interval.high, 3);
}

void AddInterval(Json::Value& json, const std::string& key, const Interval& interval) {
  json[key] = JsonNumber(interval.value);
  json[key + "_low"] = JsonNumber(interval.low);
  json[key + "_high"] = JsonNumber(interval.high);
}

Json::Value ProbabilityDocument(const Interval& interval) {
  Json::Value json;
  json["probability"] = JsonNumber(interval.value);
  json["low"] = JsonNumber(interval.low);
  json["high"] = JsonNumber(interval.high);
  return json;
}

const char* MethodText(LimitRisk::Method method) {
  return method == LimitRisk::Method::kSampling ? "sampling" : "importance sampling";
}

double BetaOf(const LimitRisk& risk) {
  return risk.design_points.empty() ? Interval().value : risk.design_points.front().beta;
}

}  // namespace

SampleScheme ParseSampleScheme(const std::string& text) {
  const SampleScheme* found = nullptr;
  std::string names;
  for (const auto& [name, scheme] : kSchemes) {
    if (!text.empty() && std::string_view(name).substr(0, text.size()) == text) found = &scheme;
    names += (names.empty() ? "" : ", ") + std::string(name);
  }
  if (found != nullptr) return *found;
  throw Refusal("scheme: " + Quoted(text) + " is none of " + names);
}

PropagationReport::PropagationReport(const VariedStudy& study,
                                     const analysis::PropagationSettings& settings,
                                     const Progress& progress)
    : study_(study),
      settings_(settings),
      result_(RunAnalysis(progress, [&](const analysis::Progress& told) {
        return analysis::Propagate(study.GetModel(), study.GetSpace(), settings, told);
      })) {}

std::vector<std::string> PropagationReport::GetNotes() const {
  std::vector<std::string> notes = study_.GetNotes();
  for (const std::wstring& note : result_.notes) notes.push_back(ToUtf8(note));
  return notes;
}

Json::Value PropagationReport::QuantityDocument(std::size_t k) const {
  const QuantityScatter& quantity = result_.quantities[k];
  Json::Value json;
  json["kind"] = KindText(study_.GetModel().GetQuantities()[k]);
  AddInterval(json, "mean", quantity.mean);
  AddInterval(json, "sd", quantity.deviation);
  AddInterval(json, "cov", quantity.variation);
  json["min"] = JsonNumber(quantity.smallest);
  json["max"] = JsonNumber(quantity.largest);
  json["failed"] = Json::Int64(quantity.num_failed);
  for (const char* key : {"quantiles", "quantiles_low", "quantiles_high"})
    json[key] = Json::Value(Json::objectValue);
  for (std::size_t i = 0; i < result_.quantiles.size(); ++i) {
    const std::string p = ProbabilityText(result_.quantiles[i]);
    json["quantiles"][p] = JsonNumber(quantity.quantiles[i].value);
    json["quantiles_low"][p] = JsonNumber(quantity.quantiles[i].low);
    json["quantiles_high"][p] = JsonNumber(quantity.quantiles[i].high);
  }
  return json;
}

Json::Value PropagationReport::LimitDocument(const LimitRisk& risk) const {
  Json::Value json = ProbabilityDocument(risk.probability);
  json["beta"] = JsonNumber(BetaOf(risk));
  json["method"] = MethodText(risk.method);
  json["sampling"] = ProbabilityDocument(risk.sampling);
  json["sampling"]["violations"] = Json::Int64(risk.num_violations);
  json["sampling"]["failed"] = Json::Int64(risk.num_failed);
  if (risk.without_errors) json["without_model_error"] = ProbabilityDocument(*risk.without_errors);
  if (!risk.design_points.empty()) {
    json["form"]["beta"] = BetaOf(risk);
    json["form"]["probability"] = risk.design_points.front().GetProbability();
    for (std::size_t i = 0; i < risk.design_points.size(); ++i) {
      const DesignPoint& point = risk.design_points[i];
      Json::Value told;
      told["beta"] = point.beta;
      const auto& inputs = study_.GetModel().GetInputs();
      for (std::size_t k = 0; k < inputs.size(); ++k)
        told["inputs"][ToUtf8(inputs[k].name)] =
            JsonNumber(risk.design_inputs(static_cast<Index>(i), static_cast<Index>(k)));
      for (std::size_t k = 0; k < result_.coordinates.size(); ++k)
        told["importances"][ToUtf8(result_.coordinates[k])] =
            JsonNumber(point.importances(static_cast<Index>(k)));
      json["form"]["design_points"].append(told);
    }
  }
  if (risk.importance) {
    Json::Value& importance = json["importance_sampling"];
    importance = ProbabilityDocument(risk.importance->probability);
    importance["points"] = Json::Int64(risk.importance->num_points);
    importance["violations"] = Json::Int64(risk.importance->num_violations);
    importance["failed"] = Json::Int64(risk.importance->num_failed);
  }
  json["warnings"] = Json::Value(Json::arrayValue);
  for (const std::wstring& warning : risk.warnings) json["warnings"].append(ToUtf8(warning));
  return json;
}

Json::Value PropagationReport::GetDocument() const {
  Json::Value document;
  document["inputs"] = study_.GetInputsDocument();
  document["designs"] = Json::Int64(result_.num_designs);
  document["scheme"] = SchemeText(settings_.scheme);
  document["seed"] = settings_.seed;
  document["confidence"] = settings_.confidence;
  document["model_error"] = settings_.with_errors;
  document["quantities"] = Json::Value(Json::objectValue);
  const auto& quantities = result_.quantities;
  for (std::size_t k = 0; k < quantities.size(); ++k)
    document["quantities"][ToUtf8(quantities[k].name)] = QuantityDocument(k);
  document["correlations"] = Json::Value(Json::arrayValue);
  for (std::size_t i = 0; i < quantities.size(); ++i)
    for (std::size_t k = i + 1; k < quantities.size(); ++k) {
      const auto row = static_cast<Index>(i);
      const auto column = static_cast<Index>(k);
      Json::Value json;
      json["quantities"].append(ToUtf8(quantities[i].name));
      json["quantities"].append(ToUtf8(quantities[k].name));
      json["coefficient"] = JsonNumber(result_.correlations(row, column));
      json["low"] = JsonNumber(result_.correlations_low(row, column));
      json["high"] = JsonNumber(result_.correlations_high(row, column));
      document["correlations"].append(json);
    }
  document["limits"] = Json::Value(Json::objectValue);
  for (const LimitRisk& risk : result_.limits)
    document["limits"][ToUtf8(risk.name)] = LimitDocument(risk);
  document["notes"] = Json::Value(Json::arrayValue);
  for (const std::string& note : GetNotes()) document["notes"].append(note);
  return document;
}

void PropagationReport::WriteCsv(CsvWriter& writer) const {
  for (const char* title : {"name", "statistic", "value", "low", "high"})
    writer.Add(std::string_view(title));
  writer.EndRecord();
  const auto write = [&](const std::wstring& name, const std::string& statistic,
                         const Interval& interval) {
    writer.Add(std::string_view(ToUtf8(name)));
    writer.Add(std::string_view(statistic));
    writer.Add(interval.value);
    writer.Add(interval.low);
    writer.Add(interval.high);
    writer.EndRecord();
  };
  const auto exact = [](double value) { return Interval{value, value, value}; };
  for (const QuantityScatter& quantity : result_.quantities) {
    write(quantity.name, "mean", quantity.mean);
    write(quantity.name, "sd", quantity.deviation);
    write(quantity.name, "cov", quantity.variation);
    write(quantity.name, "min", exact(quantity.smallest));
    write(quantity.name, "max", exact(quantity.largest));
    for (std::size_t i = 0; i < result_.quantiles.size(); ++i)
      write(quantity.name, "quantile " + ProbabilityText(result_.quantiles[i]),
            quantity.quantiles[i]);
    write(quantity.name, "failed", exact(static_cast<double>(quantity.num_failed)));
  }
  for (const LimitRisk& risk : result_.limits) {
    write(risk.name, "probability", risk.probability);
    write(risk.name, "probability by sampling", risk.sampling);
    if (risk.without_errors)
      write(risk.name, "probability without model error", *risk.without_errors);
    if (risk.importance)
      write(risk.name, "probability by importance sampling", risk.importance->probability);
    if (risk.design_points.empty()) continue;
    write(risk.name, "probability by FORM", exact(risk.design_points.front().GetProbability()));
    write(risk.name, "beta", exact(BetaOf(risk)));
  }
}

void PropagationReport::PrintQuantities(std::ostream& out) const {
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  for (const char* title : {"mean", "+-", "sd", "+-", "cov", "min"})
    table.AddColumn(title, TextTable::Align::kRight);
  for (const double p : result_.quantiles)
    table.AddColumn(NumberText(100.0 * p, 10) + " %", TextTable::Align::kRight);
  table.AddColumn("max", TextTable::Align::kRight);
  const auto half_width = [](const Interval& interval) {
    return NumberText(0.5 * (interval.high - interval.low), 2);
  };
  std::string failed;
  for (const QuantityScatter& quantity : result_.quantities) {
    std::vector<std::string> row = {
        ToUtf8(quantity.name),          NumberText(quantity.mean.value, 6),
        half_width(quantity.mean),      NumberText(quantity.deviation.value),
        half_width(quantity.deviation), NumberText(quantity.variation.value, 3),
        NumberText(quantity.smallest)};
    for (const Interval& value : quantity.quantiles) row.push_back(NumberText(value.value));
    row.push_back(NumberText(quantity.largest));
    table.AddRow(std::move(row));
    if (quantity.num_failed > 0)
      failed += (failed.empty() ? "" : ", ") + ToUtf8(quantity.name) + ' ' +
                std::to_string(quantity.num_failed);
  }
  table.Print(out, "  ");
  if (!failed.empty()) out << Wrapped("Designs without a value, left out: " + failed, "  ");
}

void PropagationReport::PrintCorrelations(std::ostream& out) const {
  std::vector<std::pair<Index, Index>> pairs;
  const Index q = result_.correlations.rows();
  for (Index i = 0; i < q; ++i)
    for (Index k = i + 1; k < q; ++k)
      if (std::abs(result_.correlations(i, k)) >= kWeakCorrelation) pairs.emplace_back(i, k);
  if (pairs.empty()) return;
  std::stable_sort(pairs.begin(), pairs.end(), [&](const auto& a, const auto& b) {
    return std::abs(result_.correlations(a.first, a.second)) >
           std::abs(result_.correlations(b.first, b.second));
  });
  TextTable table;
  table.AddColumn("quantities", TextTable::Align::kLeft);
  table.AddColumn("coefficient", TextTable::Align::kRight);
  table.AddColumn("interval", TextTable::Align::kRight);
  const std::size_t shown = std::min(pairs.size(), kMostCorrelations);
  for (std::size_t p = 0; p < shown; ++p) {
    const auto [i, k] = pairs[p];
    const Interval interval{result_.correlations(i, k), result_.correlations_low(i, k),
                            result_.correlations_high(i, k)};
    table.AddRow({ToUtf8(result_.quantities[static_cast<std::size_t>(i)].name) + ", " +
                      ToUtf8(result_.quantities[static_cast<std::size_t>(k)].name),
                  NumberText(interval.value, 3), RangeText(interval)});
  }
  out << "\nCorrelations from " << kWeakCorrelation;
  if (shown < pairs.size()) out << ", the strongest " << shown << " of " << pairs.size();
  out << '\n';
  table.Print(out, "  ");
}

void PropagationReport::PrintDesignPoint(const LimitRisk& risk, std::ostream& out) const {
  const DesignPoint& point = risk.design_points.front();
  std::vector<Index> order(result_.coordinates.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [&](Index a, Index b) { return point.importances(a) > point.importances(b); });
  std::string text;
  const Index num_inputs = static_cast<Index>(study_.GetSpace().GetDim());
  for (const Index i : order) {
    if (point.importances(i) < kSmallImportance) break;
    text += (text.empty() ? "" : ", ") + ToUtf8(result_.coordinates[static_cast<std::size_t>(i)]);
    if (i < num_inputs)
      text += " = " + NumberText(risk.design_inputs(
                          0, study_.GetSpace().GetColumns()[static_cast<std::size_t>(i)]));
    const double percent = 100.0 * point.importances(i);
    text += " (" + NumberText(percent, percent < 99.5 ? 2 : 3) + " %)";
  }
  if (text.empty()) text = "the median of each";
  out << Wrapped((point.beta < 0.0 ? "Nearest design that keeps " : "Most likely violation of ") +
                     ToUtf8(risk.name) + ", with shares of the inputs in it: " + text,
                 "  ");
}

void PropagationReport::PrintLimits(std::ostream& out) const {
  if (result_.limits.empty()) return;
  TextTable table;
  table.AddColumn("limit", TextTable::Align::kLeft);
  table.AddColumn("probability", TextTable::Align::kRight);
  table.AddColumn("interval", TextTable::Align::kRight);
  table.AddColumn("by", TextTable::Align::kLeft);
  for (const char* title : {"beta", "FORM", "importance sampling", "sampling"})
    table.AddColumn(title, TextTable::Align::kRight);
  if (settings_.with_errors) table.AddColumn("without model error", TextTable::Align::kRight);
  for (const LimitRisk& risk : result_.limits) {
    const bool has_points = !risk.design_points.empty();
    std::vector<std::string> row = {
        ToUtf8(risk.name),
        NumberText(risk.probability.value, 3),
        RangeText(risk.probability),
        MethodText(risk.method),
        NumberText(BetaOf(risk)),
        has_points ? NumberText(risk.design_points.front().GetProbability(), 3) : "-",
        risk.importance ? NumberText(risk.importance->probability.value, 3) : "-",
        NumberText(risk.sampling.value, 3)};
    if (settings_.with_errors)
      row.push_back(risk.without_errors ? NumberText(risk.without_errors->value, 3) : "-");
    table.AddRow(std::move(row));
  }
  out << "\nProbabilities that limits are violated\n";
  table.Print(out, "  ");
  for (const LimitRisk& risk : result_.limits) {
    if (!risk.design_points.empty())
      PrintDesignPoint(risk, out);
    else if (risk.is_searched && risk.num_violations == 0)
      out << Wrapped("No violation of " + ToUtf8(risk.name) + " was found within " +
                         NumberText(analysis::kFarthest) +
                         " standard deviations; the interval is that of the sample",
                     "  ");
    for (const std::wstring& warning : risk.warnings)
      out << Wrapped("Warning, " + ToUtf8(risk.name) + ": " + ToUtf8(warning), "  ");
  }
}

std::string PropagationReport::GetText() const {
  utils::TextStream out;
  out << result_.num_designs << " designs (" << SchemeText(settings_.scheme) << "), "
      << Short(100.0 * settings_.confidence) << " % intervals"
      << (settings_.with_errors ? ", with the errors of the models" : "") << '\n';
  for (const std::string& note : GetNotes()) out << Wrapped(note, "");
  out << '\n';
  PrintQuantities(out);
  PrintCorrelations(out);
  PrintLimits(out);
  return out.str();
}

}  // namespace corvath::study
