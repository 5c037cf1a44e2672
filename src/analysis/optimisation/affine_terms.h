#pragma once

#include "analysis/progress.h"
#include "analysis/study_model.h"
#include "calculator/calculator.h"
#include "calculator/parsed_text.h"
#include "design/named_sequence.h"

#include <Eigen/Core>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvath::analysis {

/// A name that a text uses and a study does not have.
class UnknownName : public AnalysisError {
 public:
  UnknownName(const std::wstring& message, std::wstring name, std::vector<std::wstring> names)
      : AnalysisError(message), name_(std::move(name)), names_(std::move(names)) {}
  const std::wstring& GetName() const { return name_; }
  const std::vector<std::wstring>& GetNames() const { return names_; }  ///< those that there are

 private:
  std::wstring name_;
  std::vector<std::wstring> names_;
};

/// constant + sum of factors times columns: of the inputs, then the quantities of a study, then what
/// a TermReader adds.
struct AffineTerm {
  std::map<Eigen::Index, double> factors;
  double constant = 0.0;
};

/// Reads texts of the language of criteria as the largest of smooth terms: what has a kink where two
/// stresses are equal, such as max(abs(stress)), becomes one term for each stress and sign. Sums,
/// multiples, max, min and abs are taken apart, through the project's criteria too; what else a text
/// holds is evaluated as a criterion of its own.
class TermReader {
 public:
  using Terms = std::vector<AffineTerm>;
  using CriterionSequence = algorithm::datatypes::CriterionSequence;

  explicit TermReader(const StudyModel& model);

  /// Terms of which sign * text is the largest. @param sign  1 or -1
  /// @throws UnknownName    of an input, response or criterion
  /// @throws AnalysisError  the text is no expression, fails, or is no single number
  Terms LargestOf(const std::wstring& text, double sign);

  /// Terms that are to be at most 0 for a limit "left <= right" or "left >= right". Each element of
  /// a vector is limited.
  /// @throws as LargestOf; AnalysisError also for a text without one comparison
  Terms Exceedances(const std::wstring& text);

  /// What terms refer to behind the quantities of the study; empty where it needs nothing else.
  const CriterionSequence& GetMore() const { return more_; }

 private:
  using Index = calculator::ParsedText::Index;
  /// One value, or those of a vector.
  struct Parts {
    std::vector<Terms> elements;
    bool is_vector = false;
  };

  std::optional<Terms> ExceedancesOfName(const std::wstring& text);
  const calculator::ParsedText& Parse(const std::wstring& text);
  void CheckNames(const calculator::ParsedText& text);
  Parts Read(const calculator::ParsedText& text, Index node, double sign);
  Parts ReadName(const std::wstring& name, double sign);
  Parts ReadProduct(const calculator::ParsedText& text, Index node, double sign);
  Parts ReadFunction(const calculator::ParsedText& text, Index node, double sign);
  Parts ReadSide(const std::wstring& text, double sign);
  Parts ReadWhole(const std::wstring& text, double sign);
  Parts Column(Eigen::Index column, double sign) const;
  static Parts Sum(const Parts& a, const Parts& b);
  math::Value TrialValue(const std::wstring& text);
  std::wstring NewName();

  const StudyModel& model_;
  CCalculator parser_;  ///< for its trees alone
  Eigen::RowVectorXd trial_inputs_, trial_responses_;
  CriterionSequence more_;
  std::map<std::wstring, Eigen::Index> more_columns_;  ///< by text
  int depth_ = 0;                                      ///< of criteria that refer to criteria
};

}  // namespace corvath::analysis
