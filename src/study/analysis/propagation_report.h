#pragma once

#include "analysis/propagation/propagation.h"
#include "study/analysis/varied_study.h"
#include "study/progress.h"
#include "study/table/csv_writer.h"

#include <json/json.h>

#include <string>
#include <vector>

namespace corvath::study {

/// "latin-hypercube", "sobol" or "monte-carlo", or the beginning of one.
/// @throws Refusal  it is none
analysis::SampleScheme ParseSampleScheme(const std::string& text);

/// A propagation of a project with its result as document, table and text.
class PropagationReport {
 public:
  /// @param study  outlives the report
  /// @throws Refusal    the settings are refused
  /// @throws Cancelled  `progress` said so
  PropagationReport(const VariedStudy& study, const analysis::PropagationSettings& settings,
                    const Progress& progress);

  /// See zelstudy_propagate().
  Json::Value GetDocument() const;
  /// One row per statistic: name of the quantity or limit, statistic, value, ends of its interval.
  void WriteCsv(CsvWriter& writer) const;
  /// For a person.
  std::string GetText() const;

 private:
  std::vector<std::string> GetNotes() const;
  Json::Value QuantityDocument(std::size_t k) const;
  Json::Value LimitDocument(const analysis::LimitRisk& risk) const;
  void PrintQuantities(std::ostream& out) const;
  void PrintCorrelations(std::ostream& out) const;
  void PrintLimits(std::ostream& out) const;
  void PrintDesignPoint(const analysis::LimitRisk& risk, std::ostream& out) const;

  const VariedStudy& study_;
  analysis::PropagationSettings settings_;
  analysis::Propagation result_;
};

}  // namespace corvath::study
