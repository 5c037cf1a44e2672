#include "study/analysis/sensitivity_report.h"

#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "study/analysis/quantity_kind.h"
#include "study/analysis/run_analysis.h"
#include "study/describe/help_text.h"
#include "study/describe/json_text.h"
#include "study/describe/text_table.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace corvath::study {
namespace {

using analysis::Estimates;
using analysis::QuantitySensitivity;
using Eigen::Index;
using utils::ToUtf8;

/// Inputs whose total index is below this are told by their number alone.
constexpr double kSmall = 0.005;

std::string Fixed(double value) {
  if (!std::isfinite(value)) return "-";
  utils::TextStream text;
  text.setf(std::ios::fixed);
  text.precision(3);
  text << value;
  const std::string plain = text.str();
  return plain == "-0.000" ? "0.000" : plain;
}

std::string IntervalText(const Estimates& estimates, Index i) {
  return Fixed(estimates.low(i)) + " to " + Fixed(estimates.high(i));
}

}  // namespace

SensitivityReport::SensitivityReport(const VariedStudy& study,
                                     const analysis::SensitivitySettings& settings,
                                     const Progress& progress)
    : study_(study),
      settings_(settings),
      result_(RunAnalysis(progress, [&](const analysis::Progress& told) {
        return analysis::AnalyseSensitivity(study.GetModel(), study.GetSpace(), settings, told);
      })) {}

std::string SensitivityReport::GroupName(std::size_t group) const {
  std::string name;
  for (const std::wstring& input : result_.groups[group])
    name += (name.empty() ? "" : " + ") + ToUtf8(input);
  return name;
}

std::vector<std::string> SensitivityReport::GetNotes() const {
  std::vector<std::string> notes = study_.GetNotes();
  std::string together;
  for (std::size_t i = 0; i < result_.groups.size(); ++i)
    if (result_.groups[i].size() > 1) together += (together.empty() ? "" : "; ") + GroupName(i);
  if (!together.empty()) notes.push_back("Correlated inputs vary as one: " + together);
  return notes;
}

Json::Value SensitivityReport::GetDocument() const {
  Json::Value document;
  document["over"] = study_.IsOverDistributions() ? "distributions" : "bounds";
  document["inputs"] = study_.GetInputsDocument();
  document["base"] = Json::Int64(settings_.num_base);
  document["evaluations"] = Json::Int64(result_.num_evaluations);
  document["seed"] = settings_.seed;
  document["confidence"] = settings_.confidence;
  document["groups"] = Json::Value(Json::arrayValue);
  for (const auto& group : result_.groups) {
    Json::Value names(Json::arrayValue);
    for (const std::wstring& name : group) names.append(ToUtf8(name));
    document["groups"].append(names);
  }
  document["quantities"] = Json::Value(Json::objectValue);
  for (std::size_t k = 0; k < result_.quantities.size(); ++k) {
    const QuantitySensitivity& quantity = result_.quantities[k];
    Json::Value json;
    json["kind"] = KindText(study_.GetModel().GetQuantities()[k]);
    json["mean"] = JsonNumber(quantity.mean);
    json["sd"] = JsonNumber(std::sqrt(quantity.variance));
    json["constant"] = quantity.is_constant;
    json["failed"] = Json::Int64(quantity.num_failed);
    json["unexplained"] = JsonNumber(1.0 - quantity.cop);
    const auto add = [&](const char* key, const Eigen::VectorXd& values) {
      json[key] = Json::Value(Json::objectValue);
      for (Index i = 0; i < values.size(); ++i)
        json[key][GroupName(static_cast<std::size_t>(i))] = JsonNumber(values(i));
    };
    add("first", quantity.first.value);
    add("first_low", quantity.first.low);
    add("first_high", quantity.first.high);
    add("total", quantity.total.value);
    add("total_low", quantity.total.low);
    add("total_high", quantity.total.high);
    if (settings_.second_order) {
      json["second"] = Json::Value(Json::arrayValue);
      Index pair = 0;
      for (std::size_t a = 0; a < result_.groups.size(); ++a)
        for (std::size_t b = a + 1; b < result_.groups.size(); ++b, ++pair) {
          Json::Value second;
          second["inputs"].append(GroupName(a));
          second["inputs"].append(GroupName(b));
          second["value"] = JsonNumber(quantity.second.value(pair));
          second["low"] = JsonNumber(quantity.second.low(pair));
          second["high"] = JsonNumber(quantity.second.high(pair));
          json["second"].append(second);
        }
    }
    document["quantities"][ToUtf8(quantity.name)] = json;
  }
  document["notes"] = Json::Value(Json::arrayValue);
  for (const std::string& note : GetNotes()) document["notes"].append(note);
  return document;
}

void SensitivityReport::WriteCsv(CsvWriter& writer) const {
  for (const char* title : {"quantity", "order", "input", "second_input", "value", "low", "high"})
    writer.Add(std::string_view(title));
  writer.EndRecord();
  for (const QuantitySensitivity& quantity : result_.quantities) {
    const auto write = [&](const char* order, const std::string& a, const std::string& b,
                           const Estimates& estimates, Index i) {
      writer.Add(std::string_view(ToUtf8(quantity.name)));
      writer.Add(std::string_view(order));
      writer.Add(std::string_view(a));
      writer.Add(std::string_view(b));
      writer.Add(estimates.value(i));
      writer.Add(estimates.low(i));
      writer.Add(estimates.high(i));
      writer.EndRecord();
    };
    for (std::size_t i = 0; i < result_.groups.size(); ++i)
      write("first", GroupName(i), "", quantity.first, static_cast<Index>(i));
    for (std::size_t i = 0; i < result_.groups.size(); ++i)
      write("total", GroupName(i), "", quantity.total, static_cast<Index>(i));
    Index pair = 0;
    if (!settings_.second_order) continue;
    for (std::size_t a = 0; a < result_.groups.size(); ++a)
      for (std::size_t b = a + 1; b < result_.groups.size(); ++b)
        write("second", GroupName(a), GroupName(b), quantity.second, pair++);
  }
}

namespace {

std::string Headline(const analysis::StudyQuantity& kind, const QuantitySensitivity& quantity) {
  std::string text = ToUtf8(quantity.name);
  if (kind.kind != analysis::StudyQuantity::Kind::kResponse) text += " (criterion)";
  if (quantity.is_constant) return text + ": does not vary\n";
  if (!std::isfinite(quantity.mean)) return text + ": has no values\n";
  text += ": mean " + Short(quantity.mean) + ", standard deviation " +
          Short(std::sqrt(quantity.variance));
  if (std::isfinite(quantity.cop))
    text += "; the model leaves " + Fixed(std::max(1.0 - quantity.cop, 0.0)) +
            " of the variance unexplained (1 - CoP)";
  text += '\n';
  if (quantity.num_failed > 0)
    text += "  " + std::to_string(quantity.num_failed) + " rows without a value are left out\n";
  return text;
}

}  // namespace

std::string SensitivityReport::GetText() const {
  utils::TextStream out;
  out << Wrapped("Shares of the variance of each quantity, inputs " +
                     std::string(study_.IsOverDistributions() ? "as they scatter"
                                                              : "even between their bounds") +
                     ": first order, by the input alone, and total, with its interactions; " +
                     Short(100.0 * settings_.confidence) + " % intervals; " +
                     std::to_string(result_.num_evaluations) + " designs",
                 "");
  for (const std::string& note : GetNotes()) out << Wrapped(note, "");
  for (std::size_t k = 0; k < result_.quantities.size(); ++k) {
    const QuantitySensitivity& quantity = result_.quantities[k];
    out << '\n' << Headline(study_.GetModel().GetQuantities()[k], quantity);
    if (quantity.is_constant || !std::isfinite(quantity.mean)) continue;
    std::vector<Index> order(result_.groups.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](Index a, Index b) {
      return quantity.total.value(a) > quantity.total.value(b);
    });
    TextTable table;
    table.AddColumn("input", TextTable::Align::kLeft);
    for (const char* title : {"first", "interval", "total", "interval"})
      table.AddColumn(title, TextTable::Align::kRight);
    std::size_t num_small = 0;
    for (const Index i : order) {
      if (quantity.total.value(i) < kSmall) {
        ++num_small;
        continue;
      }
      table.AddRow({GroupName(static_cast<std::size_t>(i)), Fixed(quantity.first.value(i)),
                    IntervalText(quantity.first, i), Fixed(quantity.total.value(i)),
                    IntervalText(quantity.total, i)});
    }
    table.Print(out, "  ");
    if (num_small > 0)
      out << "  " << num_small << (num_small == 1 ? " input" : " inputs") << " with a total below "
          << Fixed(kSmall) << '\n';
    if (!settings_.second_order) continue;
    TextTable pairs;
    pairs.AddColumn("interaction", TextTable::Align::kLeft);
    pairs.AddColumn("second", TextTable::Align::kRight);
    pairs.AddColumn("interval", TextTable::Align::kRight);
    bool any = false;
    Index pair = 0;
    for (std::size_t a = 0; a < result_.groups.size(); ++a)
      for (std::size_t b = a + 1; b < result_.groups.size(); ++b, ++pair) {
        if (!(quantity.second.value(pair) >= kSmall)) continue;
        any = true;
        pairs.AddRow({GroupName(a) + ", " + GroupName(b), Fixed(quantity.second.value(pair)),
                      IntervalText(quantity.second, pair)});
      }
    if (any) pairs.Print(out, "  ");
  }
  return out.str();
}

}  // namespace corvath::study
