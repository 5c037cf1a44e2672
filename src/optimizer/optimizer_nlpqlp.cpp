#include "optimizer/optimizer_nlpqlp.h"

#include "foundation/log_line.h"
#include "optimizer/gradient_estimate.h"
#include "optimizer/refuse.h"
#include "optimizer/stencil.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm::optimizer {

using Optimizer = OptimizerNLPQLP<double>;

namespace {

std::int32_t ToCore(std::uint64_t number) {
  constexpr auto kLargest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min<std::uint64_t>(number, kLargest));
}

/// With L points from 1 down to this step, neighbours stand in the ratio (1 + sqrt 5) / (3 + sqrt 5),
/// the golden section.
double AutomaticSmallestStep(std::int32_t num_parallel) {
  const double root = std::sqrt(5.0);
  return std::pow((root + 1.0) / (root + 3.0), num_parallel - 1);
}

}  // namespace

void Optimizer::Initialize(const OptimizerSettingsBase<double>& settings) {
  const auto& own = dynamic_cast<const OptimizerSettingsNLPQLP<double>&>(settings);
  phase_ = kStartStored;
  state_ = State::kCreated;
  own.Check(logger_.get());

  core_ = NLPQLPInterface(ToCore(own.GetNumberInputs()), ToCore(own.GetNumberEqualities()),
                          ToCore(own.GetNumberInequalities()), ToCore(own.GetNumberParallel()));
  core_.SetLowerBounds(own.GetLowerBounds());
  core_.SetUpperBounds(own.GetUpperBounds());
  core_.ACC = own.GetAccuracy();
  core_.MAXFUN = ToCore(std::min<std::uint64_t>(own.GetMaxNumFunctionCalls(), 50));
  core_.MAXIT = ToCore(own.GetMaxNumFunctionCalls());
  core_.MAX_NM = ToCore(own.GetStackSize());
  core_.STPMIN = own.GetMinStepsize() > 0.0 ? own.GetMinStepsize() : AutomaticSmallestStep(core_.L);

  budget_ = own.GetMaxNumFunctionCalls();
  gradient_dx_ = own.GetGradientDx();
  numerical_differences_ = own.GetNumericalDifferences();
  use_initial_stepsize_limit_ = own.GetUseInitialStepsizeLimit();
  max_stepsize_ = own.GetMaxStepsize();
  converged_ = false;
  warned_of_displacement_ = false;

  Restart(settings);
  best_inputs_.resize(0, core_.N);
  best_objectives_.resize(0, 1);
  best_equalities_.resize(0, core_.ME);
  best_inequalities_.resize(0, core_.M - core_.ME);

  start_design_.resize(0, core_.N);
  state_ = State::kDesignsOut;
  SetAwaitingDesigns(own.GetStartDesigns());
  SetInputs(own.GetStartDesigns());
  state_ = State::kInitialized;
  AdaptStep();
}

void Optimizer::AdaptStep() {
  const Matrix none(0, core_.N);
  const Stencil stencil(numerical_differences_, gradient_dx_, core_.XL, core_.XU);
  switch (phase_) {
    case kStartStored:
      return SetAwaitingDesigns(none);
    case kStartStencilOut:
      if (start_design_.rows() == 0) Refuse(L"No initial start design was transferred to NLPQLP.");
      if (start_design_.cols() != core_.N) Refuse(L"Wrong dimensions of start design.");
      core_.X.col(0).head(core_.N) = start_design_.row(0).transpose();
      return SetAwaitingDesigns(stencil.Designs(start_design_.row(0).transpose(), true));
    case kCoreRunning:
      if (core_.IFAIL == -2)
        return SetAwaitingDesigns(stencil.Designs(core_.GetColumn(core_.X, 0), false));
      if (core_.IFAIL == -1) return SetAwaitingDesigns(core_.X.topRows(core_.N).transpose());
      state_ = State::kTerminated;
      return SetAwaitingDesigns(none);
    default:
      Refuse(L"Programming error: This is not supposed to happen.");
  }
}

bool Optimizer::IsDone() const {
  if (state_ != State::kInitialized && phase_ == kCoreRunning && core_.IFAIL > -1) return true;
  return num_appraised_ >= budget_ || converged_;
}

void Optimizer::OnSetInputs(const Matrix& designs) {
  // The empty round that follows Initialize must not take the start design away.
  if (phase_ == kStartStored && designs.rows() > 0) start_design_ = designs;
  if (phase_ == kCoreRunning && core_.IFAIL == -2 && designs.cols() == gradient_dx_.size() &&
      !warned_of_displacement_) {
    const Stencil stencil(numerical_differences_, gradient_dx_, core_.XL, core_.XU);
    if (!stencil.Fits(designs, false)) {
      warned_of_displacement_ = true;
      utils::log::LogLine(logger_, utils::log::kWarning)
          << L"NLPQLP: Check the format of design point variables and/or the size of the step "
             L"size used for finite differences! The computed design points are too far away from "
             L"the requested values to guarantee reliable numerical gradients.";
    }
  }
  OptimizerBase<double>::OnSetInputs(designs);
}

void Optimizer::AppraiseStep() {
  if (state_ == State::kTerminated) return;
  if (phase_ == kStartStored) {
    phase_ = kStartStencilOut;
  } else if (phase_ == kStartStencilOut) {
    AppraiseStartStencil();
  } else if (core_.IFAIL == -2) {
    AppraiseGradientStencil();
  } else if (core_.IFAIL == -1) {
    AppraiseLineSearch();
  } else {
    Refuse(L"The NLPQLP solver should not be called after termination. IFAIL != -1/-2.");
  }
}

void Optimizer::AppraiseStartStencil() {
  const Stencil stencil(numerical_differences_, gradient_dx_, core_.XL, core_.XU);
  if (success_.size() != static_cast<std::size_t>(stencil.Size(true)))
    Refuse(L"NLPQLP: CriteriaSuccessInfo was not set properly (is wrong dimension).");
  if (!success_[0] || std::count(success_.begin(), success_.end(), true) < 2) {
    core_.IFAIL = kStartFailed;
    state_ = State::kTerminated;
    return;
  }
  for (Eigen::Index column = 0; column < core_.L; ++column) {
    core_.X.col(column).head(core_.N) = start_design_.row(0).transpose();
    TakeResponses(0, column);
  }
  if (!EstimateGradient(true)) {
    core_.IFAIL = kGradientFailed;
    state_ = State::kTerminated;
    return;
  }
  if (use_initial_stepsize_limit_) LimitFirstStep();
  phase_ = kCoreRunning;
  StepCore();
}

/// A first matrix whose model takes a step of about max_stepsize_ along each input.
void Optimizer::LimitFirstStep() {
  core_.C.setZero();
  for (Eigen::Index i = 0; i < core_.N; ++i) {
    const double slope = core_.DF(i);
    core_.C(i, i) = std::abs(slope) > core_.ACC ? std::abs(slope / max_stepsize_(i)) : 1.0;
  }
  core_.MODE = 1;
}

void Optimizer::AppraiseGradientStencil() {
  const Stencil stencil(numerical_differences_, gradient_dx_, core_.XL, core_.XU);
  CheckRows(static_cast<std::uint64_t>(stencil.Size(false)));
  if (success_.size() != static_cast<std::size_t>(stencil.Size(false)))
    Refuse(L"NLPQLP: CriteriaSuccessInfo was not set properly (is wrong dimension).");
  if (!EstimateGradient(false)) {
    core_.IFAIL = kGradientFailed;
    state_ = State::kTerminated;
    utils::log::LogLine(logger_, utils::log::kError) << L"Gradient estimate failed";
    return;
  }
  StepCore();
}

void Optimizer::AppraiseLineSearch() {
  CheckRows(static_cast<std::uint64_t>(core_.L));
  if (success_.size() != static_cast<std::size_t>(core_.L))
    Refuse(L"CriteriaSuccessInfo was not set properly (is wrong dimension).");
  for (Eigen::Index column = 0; column < core_.L; ++column) {
    if (success_[static_cast<std::size_t>(column)]) {
      TakeResponses(column, column);
    } else {  // so terrible that the line search backs away
      core_.F(column) = std::numeric_limits<double>::max();
      core_.G.col(column).setConstant(std::numeric_limits<double>::lowest());
    }
  }
  StepCore();
}

void Optimizer::CheckRows(std::uint64_t rows) const {
  const auto differs = [&](const Matrix& values) {
    return static_cast<std::uint64_t>(values.rows()) != rows;
  };
  if (differs(objectives_))
    Refuse(L"NLPQLP requires objective function values of different dimension.");
  if (nequalities_ > 0 && differs(equalities_))
    Refuse(L"NLPQLP requires equality constraint function values of different dimension.");
  if (ninequalities_ > 0 && differs(inequalities_))
    Refuse(L"NLPQLP requires inequality constraint function values of different dimension.");
}

/// Responses of the design `row` to the core's point `column`.
void Optimizer::TakeResponses(Eigen::Index row, Eigen::Index column) {
  core_.F(column) = objectives_(row, 0);
  if (nequalities_ > 0) core_.G.col(column).head(core_.ME) = equalities_.row(row).transpose();
  if (ninequalities_ > 0)
    core_.G.col(column).segment(core_.ME, core_.M - core_.ME) = inequalities_.row(row).transpose();
}

/// DF and DG from the results of a stencil; `with_start`: of the first one, whose first design is
/// the start design. False if too many designs failed.
bool Optimizer::EstimateGradient(bool with_start) {
  if (std::count(success_.begin(), success_.end(), true) == 0) {
    utils::log::LogLine(logger_, utils::log::kError) << L"All gradient designs failed";
    return false;
  }
  const Eigen::Index n = core_.N, m = core_.M, rows = inputs_.rows();
  Matrix designs = inputs_;
  Matrix responses(rows, 1 + m);
  responses.col(0) = objectives_.col(0);
  if (nequalities_ > 0) responses.middleCols(1, core_.ME) = equalities_;
  if (ninequalities_ > 0) responses.rightCols(m - core_.ME) = inequalities_;
  BitVector success = success_;

  if (numerical_differences_ == NumericalDifferences::kFivePoint) {
    const Eigen::Index first = with_start ? 1 : 0;
    success.erase(success.begin(), success.begin() + first);
    Vector gradient;
    for (Eigen::Index k = 0; k <= m; ++k) {
      const double centre = k == 0 ? core_.F(0) : core_.G(k - 1, 0);
      if (!FivePointGradient(responses.col(k).tail(rows - first), success, centre, gradient_dx_,
                             /*lenient=*/k == 0, gradient))
        return false;
      if (k == 0)
        core_.DF.head(n) = gradient;
      else
        core_.DG.row(k - 1).head(n) = gradient.transpose();
    }
    return true;
  }
  if (numerical_differences_ == NumericalDifferences::kCentral && !with_start) {
    designs.conservativeResize(rows + 1, Eigen::NoChange);
    designs.row(rows) = core_.GetColumn(core_.X, 0).transpose();
    responses.conservativeResize(rows + 1, Eigen::NoChange);
    responses(rows, 0) = core_.F(0);
    responses.row(rows).tail(m) = core_.G.col(0).head(m).transpose();
    success.push_back(true);
  }
  const Matrix gradients =
      PlaneGradients(numerical_differences_, designs, responses, success, gradient_dx_);
  core_.DF.head(n) = gradients.row(0).transpose();
  core_.DG.topLeftCorner(m, n) = gradients.bottomRows(m);
  return true;
}

void Optimizer::StepCore() {
  try {
    core_.Step();
  } catch (const std::exception& error) {
    Refuse(L"An error appeared while calling the NLPQLP solver. ", utils::MessageOf(error));
  } catch (...) {
    Refuse(L"An unknown exception appeared while calling the NLPQLP solver.");
  }
  FinishStep();
}

void Optimizer::FinishStep() {
  if (core_.IFAIL != -1 && core_.IFAIL != -2) {
    state_ = State::kTerminated;
    converged_ = core_.IFAIL == 0;
  } else if (core_.IFAIL == -2) {  // a new iterate is accepted
    best_inputs_ = core_.GetColumn(core_.X, 0).transpose();
    best_objectives_ = Matrix::Constant(1, 1, core_.F(0));
    best_equalities_ = core_.G.col(0).head(core_.ME).transpose();
    best_inequalities_ = core_.G.col(0).segment(core_.ME, core_.M - core_.ME).transpose();
  }
}

Optimizer::Matrix Optimizer::GetBestInputs() const {
  if (!converged_) return best_inputs_;
  return core_.GetColumn(core_.X, 0).transpose();
}

Optimizer::Matrix Optimizer::GetBestObjectives() const {
  if (!converged_) return best_objectives_;
  return Matrix::Constant(1, 1, core_.F(0));
}

Optimizer::Matrix Optimizer::GetBestEqualities() const {
  if (!converged_) return best_equalities_;
  return core_.G.col(0).head(core_.ME).transpose();
}

Optimizer::Matrix Optimizer::GetBestInequalities() const {
  if (!converged_) return best_inequalities_;
  return core_.G.col(0).segment(core_.ME, core_.M - core_.ME).transpose();
}

std::vector<std::uint64_t> Optimizer::GetBestIndex() const {
  if (!converged_)
    Refuse(
        L"NLPQLP can only provide the index of the best design during the iteration, if it is "
        L"converged.");
  return {num_appraised_};
}

}  // namespace corvath::algorithm::optimizer
