#include "optimizer/optimizer_base.h"

#include "foundation/log_line.h"
#include "optimizer/refuse.h"

#include <algorithm>

namespace corvath::algorithm::optimizer {

using Optimizer = OptimizerBase<double>;

namespace {

std::uint64_t Rows(const Eigen::MatrixXd& matrix) {
  return static_cast<std::uint64_t>(matrix.rows());
}
std::uint64_t Columns(const Eigen::MatrixXd& matrix) {
  return static_cast<std::uint64_t>(matrix.cols());
}
std::int32_t Number(Optimizer::State state) {
  return static_cast<std::int32_t>(state);
}

}  // namespace

void Optimizer::Restart(const OptimizerSettingsBase<double>& settings) {
  ninputs_ = settings.GetNumberInputs();
  nobjectives_ = settings.GetNumberObjectives();
  nequalities_ = settings.GetNumberEqualities();
  ninequalities_ = settings.GetNumberInequalities();
  num_appraised_ = 0;
  rounds_.clear();
  DropResults();
  awaiting_.resize(0, static_cast<Eigen::Index>(ninputs_));
  num_expected_ = 0;
}

void Optimizer::DropResults() {
  inputs_.resize(0, static_cast<Eigen::Index>(ninputs_));
  success_.clear();
  objectives_.resize(0, static_cast<Eigen::Index>(nobjectives_));
  equalities_.resize(0, static_cast<Eigen::Index>(nequalities_));
  inequalities_.resize(0, static_cast<Eigen::Index>(ninequalities_));
}

void Optimizer::Terminate() {
  if (!IsTerminated()) state_ = State::kTerminated;
}

const Optimizer::Matrix& Optimizer::GetNextDesigns() {
  if (state_ != State::kInitialized && state_ != State::kDesignsOut && state_ != State::kAdapted)
    Refuse(L"GetNextDesigns requires Initialize or Adapt before.");
  if (state_ != State::kDesignsOut) DropResults();
  state_ = State::kDesignsOut;
  return awaiting_;
}

void Optimizer::SetAwaitingDesigns(const Matrix& designs) {
  if (Columns(designs) != ninputs_)
    Refuse(L"Optimizer::SetAwaitingDesigns: The dimension of designs to be waiting for (",
           designs.cols(), L") must be equal to the dimension of design space (", ninputs_, L").");
  awaiting_ = designs;
  num_expected_ = Rows(designs);
}

void Optimizer::SetInputs(const Matrix& designs) {
  if (state_ != State::kDesignsOut)
    Refuse(L"SetInputs requires GetNextDesigns before. State is: ", Number(state_));
  if (Columns(designs) != ninputs_)
    Refuse(L"OptimizerBase::SetInputs: The dimension of the obtained design space ( ",
           designs.cols(), L") does not fit (should be ", ninputs_, L").");
  if (Rows(designs) != num_expected_)
    Refuse(L"OptimizerBase::SetInputs: The number of the obtained designs ( ", designs.rows(),
           L") is not equal to the number of expected designs (", num_expected_, L").");
  WithContext(
      L"The optimizer algorithm can set the design point vectors where the previous designs were "
      L"computed by the solver.",
      [&] { OnSetInputs(designs); });
}

void Optimizer::SetCriteriaSuccessInfo(const BitVector& bits) {
  if (state_ != State::kDesignsOut)
    Refuse(L"SetCriteriaSuccessInfo requires GetNextDesigns before. State is: ", Number(state_));
  if (bits.size() != num_expected_)
    Refuse(L"The number of obtained success infos (", bits.size(),
           L") is not equal to the number of expected designs (", num_expected_, L").");
  success_ = bits;
}

void Optimizer::CheckResponses(const Matrix& values, std::uint64_t columns,
                               const wchar_t* requires_text, const wchar_t* dimension_text,
                               const wchar_t* number_text) const {
  if (state_ != State::kDesignsOut)
    Refuse(requires_text, L" requires GetNextDesigns before. State is: ", Number(state_));
  if (Columns(values) != columns)
    Refuse(dimension_text, values.cols(), L") does not fit (expected ", columns, L").");
  if (Rows(values) != num_expected_)
    Refuse(number_text, values.rows(), L") is not equal to the number of expected designs (",
           num_expected_, L").");
}

void Optimizer::SetObjectives(const Matrix& values) {
  CheckResponses(values, nobjectives_, L"SetObjectives",
                 L"The dimension of obtained objective functions (",
                 L"The number of obtained objective function sets (");
  objectives_ = values;
}

void Optimizer::SetEqualities(const Matrix& values) {
  CheckResponses(values, nequalities_, L"SetEqualities",
                 L"The dimension of obtained equality constraint functions (",
                 L"The number of obtained equality constraint function sets (");
  equalities_ = values;
}

void Optimizer::SetInequalities(const Matrix& values) {
  CheckResponses(values, ninequalities_, L"SetInequalities",
                 L"The dimension of obtained inequality constraint functions (",
                 L"The number of obtained inequality constraint function sets (");
  inequalities_ = values;
}

void Optimizer::CheckCounts() const {
  if (Rows(inputs_) != num_expected_)
    Refuse(L"Optimizer::Appraise: The number of obtained designs (", inputs_.rows(),
           L") must be equal to the number expected designs (", num_expected_, L").");
  if (success_.size() != num_expected_)
    Refuse(L"Optimizer::Appraise: The dimension of 'success info' (", success_.size(),
           L") must be equal to the number of exppected designs (", num_expected_, L").");
  const auto check = [&](const Matrix& values, const wchar_t* text) {
    if (Rows(values) != num_expected_)
      Refuse(text, values.rows(), L") must be equal to the number of expected designs (",
             num_expected_, L").");
  };
  check(objectives_, L"Optimizer::Appraise: The number of obtained objective function values (");
  if (nequalities_ > 0)
    check(equalities_,
          L"Optimizer::Appraise: The number of obtained equality constraint function values (");
  if (ninequalities_ > 0)
    check(inequalities_,
          L"Optimizer::Appraise: The number of obtained inequality constraint function values (");
}

void Optimizer::CheckInputsFinite() const {
  const auto refuse = [](const wchar_t* kind, Eigen::Index row) {
    Refuse(
        L"Optimizer::Appraise: The algorithm computed a response at design points which contain "
        L"numbers being ",
        kind, L". Check design number #", row, L".");
  };
  for (Eigen::Index row = 0; row < inputs_.rows(); ++row) {
    if (!success_[static_cast<std::size_t>(row)]) continue;
    if (inputs_.row(row).array().isInf().any()) refuse(L"INF", row);
    if (inputs_.row(row).array().isNaN().any()) refuse(L"NaN", row);
  }
}

/// Reports every response of a succeeded design that is not finite, then refuses the round.
void Optimizer::CheckResponsesFinite() const {
  bool found_inf = false, found_nan = false;
  const auto check = [&](const Matrix& values, Eigen::Index row, const wchar_t* text) {
    const auto report = [&](const wchar_t* kind) {
      utils::log::LogLine(logger_, utils::log::kError)
          << text << row << L"(with numbers 0 .. " << inputs_.rows() - 1 << L") is " << kind
          << L".";
    };
    for (Eigen::Index k = 0; k < values.cols(); ++k) {
      if (std::isinf(values(row, k))) {
        found_inf = true;
        report(L"INF");
      } else if (std::isnan(values(row, k))) {
        found_nan = true;
        report(L"NaN");
      }
    }
  };
  for (Eigen::Index row = 0; row < inputs_.rows(); ++row) {
    if (!success_[static_cast<std::size_t>(row)]) continue;
    check(objectives_, row, L"The objective function value of design #");
    if (ninequalities_ > 0)
      check(inequalities_, row, L"An inequality constraint function value of design #");
    if (nequalities_ > 0)
      check(equalities_, row, L"An equality constraint function value of design #");
  }
  if (found_inf)
    Refuse(L"The algorithm obtained responses from the solver which contain numbers being INF.");
  if (found_nan)
    Refuse(L"The algorithm obtained responses from the solver which contain numbers being NaN.");
}

void Optimizer::Appraise() {
  if (state_ != State::kDesignsOut && state_ != State::kAppraised)
    Refuse(L"Appraise requires GetNextDesigns before.");
  CheckCounts();
  CheckInputsFinite();
  CheckResponsesFinite();
  if (state_ == State::kAppraised) {
    if (IsDone()) state_ = State::kTerminated;
    return;
  }
  num_appraised_ += num_expected_;
  rounds_.push_back({num_expected_, static_cast<std::uint64_t>(
                                        std::count(success_.begin(), success_.end(), true))});
  WithContext(
      L"The optimizer algorithm can not appraise the current data and prepare the next iteration.",
      [&] { AppraiseStep(); });
  if (IsDone())
    state_ = State::kTerminated;
  else if (state_ != State::kTerminated)
    state_ = State::kAppraised;
}

void Optimizer::Adapt() {
  if (state_ != State::kAppraised && state_ != State::kAdapted && state_ != State::kTerminated)
    Refuse(L"Adapt requires Appraise before.");
  if (state_ == State::kAppraised)
    WithContext(
        L"The optimizer algorithm can not adapt the next iterate and prepare the next design "
        L"points to be computed.",
        [&] { AdaptStep(); });
  if (state_ != State::kTerminated) state_ = State::kAdapted;
}

void Optimizer::Finalize() {
  if (state_ == State::kFinalized) return;
  if (state_ != State::kTerminated)
    Refuse(L"Finalize must be called after terminating the algorithm loop  (in optimizer).");
  WithContext(L"The optimizer algorithm can not finalize the iteration.", [&] { FinalizeStep(); });
  state_ = State::kFinalized;
}

}  // namespace corvath::algorithm::optimizer
