#pragma once

#include "analysis/optimisation/affine_terms.h"
#include "analysis/optimisation/input_scatter.h"
#include "analysis/optimisation/nonlinear_program.h"
#include "analysis/study_model.h"

#include <Eigen/Core>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvath::analysis {

/// What is wanted of a study.
struct DesignWishes {
  struct Objective {
    std::wstring text;  ///< a response, a criterion or an expression
    bool maximize = false;
  };
  std::vector<Objective> objectives;
  std::vector<std::wstring> limits;  ///< "left <= right" or "left >= right", with "name:" in front
  bool project_limits = true;        ///< the project's limit criteria count too
  /// Ranges in the place of the study's; equal ends hold an input.
  std::map<std::wstring, std::pair<double, double>> bounds;
  /// Limits are kept with so many standard deviations of what the scatter of the inputs gives them.
  double robust = 0.0;
  InputSpace::Choice scatter;  ///< of the inputs, for `robust`
};

/// The wishes as a program over the inputs of a study.
///
/// Inputs move in the range of the analysed designs (within their domains), where models were
/// trained, unless the wishes say otherwise; a random input by its mean.
class DesignTask {
 public:
  using CriterionSequence = algorithm::datatypes::CriterionSequence;
  /// The same study with more criteria behind its quantities.
  using Extend = std::function<std::shared_ptr<const StudyModel>(const CriterionSequence&)>;

  struct Objective {
    std::wstring name;
    bool maximize = false;
  };
  struct Limit {
    std::wstring name;
    std::wstring text;       ///< what it says; empty: a criterion of the project
    Eigen::Index first = 0;  ///< of its columns among the limits of the program
    Eigen::Index num_columns = 0;
  };

  /// @param extend  asked where a wish is no name or sum of names; may be empty
  /// @throws UnknownName    a wish names what the study does not have
  /// @throws AnalysisError  no objective; no input to move, or one without range; a malformed limit
  DesignTask(std::shared_ptr<const StudyModel> model, const DesignWishes& wishes,
             const Extend& extend = {});
  DesignTask(const DesignTask&) = delete;
  DesignTask& operator=(const DesignTask&) = delete;

  const StudyModel& GetModel() const { return *model_; }
  const NonlinearProgram& GetProgram() const { return program_; }
  const std::vector<Objective>& GetObjectives() const { return objectives_; }
  const std::vector<Limit>& GetLimits() const { return limits_; }
  double GetRobust() const { return robust_; }
  /// The responses on which objectives and limits depend, as far as that is known.
  const std::vector<Eigen::Index>& GetUsedResponses() const { return used_responses_; }
  /// Things to know about the task: what moves by its mean, what is held.
  const std::vector<std::wstring>& GetNotes() const { return notes_; }

  /// The value of objective i in the user's sense, from the columns of the program.
  double ObjectiveValue(Eigen::Index i, const Eigen::RowVectorXd& columns) const;
  /// What is left of limit j, negative where it is broken.
  double Reserve(const Limit& limit, const Eigen::RowVectorXd& columns) const;

  /// Objectives and limits as the program has them, but without scatter, at designs and given values
  /// of all quantities: of analysed designs, or with errors added.
  Eigen::MatrixXd Columns(const ConstPoints& x, const ConstPoints& responses) const;
  /// Standard error to expect of each column at the rows of `x`, see PropagateErrors.
  Eigen::MatrixXd ColumnErrors(const ConstPoints& x) const;

 private:
  void SetInputs(const DesignWishes& wishes);
  void SetRange(const StudyInput& input, Eigen::Index i, const DesignWishes& wishes);
  void AddTerms(const TermReader::Terms& terms, double sign);
  void FindUsed();

  std::shared_ptr<const StudyModel> model_;
  std::shared_ptr<const StudyModel> extended_;  ///< with what the wishes need besides
  NonlinearProgram program_;
  std::vector<Objective> objectives_;
  std::vector<Limit> limits_;
  std::vector<AffineTerm> columns_;  ///< of the program
  std::vector<Eigen::Index> used_responses_;
  std::vector<std::wstring> notes_;
  bool needs_criteria_ = false;
  double robust_ = 0.0;
  std::shared_ptr<const InputScatter> scatter_;
};

}  // namespace corvath::analysis
