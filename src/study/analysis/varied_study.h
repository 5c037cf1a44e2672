#pragma once

#include "analysis/input_space.h"
#include "analysis/project_model.h"
#include "study/project/project.h"
#include "study/table/table_columns.h"

#include <json/json.h>

#include <optional>
#include <string>
#include <vector>

namespace corvath::study {

/// How the inputs of a project shall vary.
struct VariationRequest {
  /// "bounds", "distributions", or empty: as the project's models were sampled; by distributions
  /// where some are given.
  std::string over;
  std::vector<std::string> distributions;  ///< see ParseNamedDistribution
  std::vector<std::string> fixed;          ///< "NAME=VALUE", the value a number or a word
  std::vector<std::string> criteria;       ///< further ones, "limit: stress <= 25"
};

/// A project whose inputs vary: what sensitivity and propagation work on.
class VariedStudy {
 public:
  /// @param needs_distributions  empty `over` means distributions, whatever the project's kind
  /// @throws Refusal  an unknown name, a text that is malformed, a criterion without a number, or
  ///                  inputs that cannot vary so
  VariedStudy(const Project& project, const VariationRequest& request, bool needs_distributions);

  const analysis::ProjectModel& GetModel() const { return *model_; }
  const analysis::InputSpace& GetSpace() const { return *space_; }
  bool IsOverDistributions() const {
    return choice_.scope == analysis::InputSpace::Scope::kDistributions;
  }
  /// Of each input "distribution", "mean" and "sd", "lower" and "upper", or "value".
  Json::Value GetInputsDocument() const;
  /// What the user should know: which inputs stay where they are, which leave the range of the
  /// analysed designs, and which lose correlations.
  std::vector<std::string> GetNotes() const;

 private:
  void Choose(const Project& project, const VariationRequest& request, bool needs_distributions);
  void RequireStates(const Project& project, const std::string& name,
                     const algorithm::RV& variable) const;
  void AddRangeNotes(std::vector<std::string>& notes) const;
  void RequireNumbers(const VariationRequest& request) const;

  TableColumns columns_;  ///< the words of inputs
  std::optional<analysis::ProjectModel> model_;
  analysis::InputSpace::Choice choice_;
  std::optional<analysis::InputSpace> space_;
};

}  // namespace corvath::study
