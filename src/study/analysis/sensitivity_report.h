#pragma once

#include "analysis/sensitivity/sensitivity.h"
#include "study/analysis/varied_study.h"
#include "study/progress.h"
#include "study/table/csv_writer.h"

#include <json/json.h>

#include <string>
#include <vector>

namespace corvath::study {

/// A sensitivity analysis of a project with its result as document, table and text.
class SensitivityReport {
 public:
  /// @param study  outlives the report
  /// @throws Refusal    the settings are refused
  /// @throws Cancelled  `progress` said so
  SensitivityReport(const VariedStudy& study, const analysis::SensitivitySettings& settings,
                    const Progress& progress);

  /// See zelstudy_sensitivity().
  Json::Value GetDocument() const;
  /// One row per index: quantity, order (first, total, second), input, second input of a pair,
  /// value, and the ends of its interval.
  void WriteCsv(CsvWriter& writer) const;
  /// For a person.
  std::string GetText() const;

 private:
  std::string GroupName(std::size_t group) const;
  std::vector<std::string> GetNotes() const;

  const VariedStudy& study_;
  analysis::SensitivitySettings settings_;
  analysis::Sensitivity result_;
};

}  // namespace corvath::study
