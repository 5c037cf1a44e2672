#pragma once

#include "analysis/study_model.h"
#include "design/named_sequence.h"
#include "foundation/log.h"
#include "foundation/once.h"
#include "solver/zel_solver.h"

#include <boost/shared_ptr.hpp>

namespace corvath::analysis {

/// The study of an open project: its trained models, and its criteria on their predictions.
///
/// Inputs of a study over deterministic parameters have the range of their domains; those of a
/// study over random variables that of the analysed designs. A distribution is known where the
/// parameter has one, in either kind of study.
class ProjectModel : public StudyModel {
 public:
  using CriterionSequence = algorithm::datatypes::CriterionSequence;

  /// @param more_criteria  criteria beside those of the project
  /// @throws utils::runtime_error  an input whose numbers make no distribution, or a criterion with
  ///                               the name of another quantity
  explicit ProjectModel(boost::shared_ptr<zel::ZELSolver> solver,
                        const CriterionSequence& more_criteria = {});

  Eigen::MatrixXd Responses(const ConstPoints& x) const override;
  Eigen::MatrixXd Criteria(const ConstPoints& x, const ConstPoints& responses) const override;
  Eigen::VectorXd StandardErrors() const override;
  Eigen::MatrixXd LocalErrors(Eigen::Index response, const ConstPoints& x) const override;
  /// The designs that are not switched off, with the values of criteria at their own responses.
  const StudyDesigns& GetDesigns() const override;

  /// Whether the models run over random variables, not over deterministic parameters.
  bool IsStochastic() const;
  zel::ZELSolver& GetSolver() const { return *solver_; }

 private:
  StudyInput MakeInput(const std::wstring& name) const;
  void SetDomain(const algorithm::datatypes::Parameter& parameter, StudyInput& input) const;
  void SetDataBounds(StudyInput& input) const;
  Eigen::VectorXd FindStandardErrors() const;
  StudyDesigns FindDesigns() const;

  boost::shared_ptr<zel::ZELSolver> solver_;
  boost::shared_ptr<utils::LogBase> log_;  ///< the solver's, which hears each line once
  CriterionSequence criteria_;
  mutable zel::IdleCriteria idle_criteria_;
  std::vector<std::wstring> input_names_;
  std::vector<std::wstring> output_names_;
  mutable utils::Once errors_once_;
  mutable Eigen::VectorXd standard_errors_;
  mutable utils::Once designs_once_;
  mutable StudyDesigns designs_;
};

}  // namespace corvath::analysis
