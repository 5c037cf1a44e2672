#pragma once

#include "analysis/optimisation/design_task.h"
#include "analysis/optimisation/next_designs.h"
#include "analysis/optimisation/optimum.h"
#include "analysis/optimisation/pareto_front.h"
#include "study/decide/optimize.h"
#include "study/table/table_columns.h"

#include <json/json.h>

#include <iosfwd>
#include <string>
#include <vector>

namespace corvath::study {

/// Optima, fronts and proposals of one task for people, programs and tables.
class OptimumText {
 public:
  /// Both outlive it.
  OptimumText(const Project& project, const analysis::DesignTask& task);

  Optimization Describe(const analysis::Optimum& optimum) const;
  Optimization Describe(const analysis::ParetoFront& front,
                        const analysis::Screening& screening) const;
  Optimization Describe(const std::vector<analysis::NextDesign>& designs) const;

 private:
  std::string WordOf(std::size_t input, double value) const;  ///< of a code; else empty
  void StartTable(Optimization& result) const;
  std::string ValueText(std::size_t input, double value) const;
  Json::Value InputsJson(const Eigen::RowVectorXd& x) const;
  Json::Value QuantitiesJson(const Eigen::RowVectorXd& values) const;
  Json::Value OptimumJson(const analysis::Optimum& optimum) const;
  std::string RefusalOf(const std::string& limit, double missing, bool with_scatter) const;
  void PrintInputs(const analysis::Optimum& optimum, std::ostream& out) const;
  void PrintLimits(const analysis::Optimum& optimum, std::ostream& out) const;
  void PrintQuantities(const analysis::DesignReport& design, std::ostream& out) const;
  void PrintNearest(const analysis::DesignReport& design, std::ostream& out) const;
  std::vector<std::string> TrustNotes(const analysis::DesignReport& design) const;

  const analysis::DesignTask& task_;
  const analysis::StudyModel& model_;
  TableColumns columns_;
  std::vector<std::string> inputs_, units_, quantities_;
};

}  // namespace corvath::study
