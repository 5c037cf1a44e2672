#include "optimizer/settings_base.h"

#include "foundation/log_line.h"
#include "foundation/same_figures.h"
#include "optimizer/refuse.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <typeinfo>

namespace corvath::algorithm::optimizer {

using Settings = OptimizerSettingsBase<double>;

Settings::OptimizerSettingsBase(std::uint64_t ninputs, std::uint64_t nobjectives,
                                std::uint64_t nequalities, std::uint64_t ninequalities)
    : ninputs_(ninputs),
      nobjectives_(nobjectives),
      nequalities_(nequalities),
      ninequalities_(ninequalities) {
  Settings::Reset();
}

void Settings::Reset() {
  ResetLowerBounds();
  ResetUpperBounds();
  ResetStartDesigns();
  ResetParameterTypes();
  ResetDiscreteStates();
}

void Settings::SetNumberInputs(std::uint64_t number) {
  ninputs_ = number;
  ResetParameterTypes();
  ResetDiscreteStates();
}

void Settings::ResetLowerBounds() {
  lowerbounds_.setConstant(static_cast<Eigen::Index>(ninputs_),
                           std::numeric_limits<double>::lowest());
}

void Settings::ResetUpperBounds() {
  upperbounds_.setConstant(static_cast<Eigen::Index>(ninputs_), std::numeric_limits<double>::max());
}

void Settings::ResetParameterTypes() {
  parameter_types_.assign(ninputs_, 0);
}

void Settings::ResetDiscreteStates() {
  discrete_states_vector_.assign(ninputs_, Vector());
}

void Settings::SetDiscreteState(std::uint64_t index, const Vector& states) {
  if (index >= discrete_states_vector_.size())
    throw std::logic_error("Error when setting discrete state. Index out of bounds.");
  discrete_states_vector_[index] = states;
}

void Settings::ResetStartDesigns() {
  // Halves first: the sum of two large bounds overflows. An input without bounds starts at 0.
  start_designs_.setZero(1, static_cast<Eigen::Index>(ninputs_));
  const Eigen::Index bounded =
      std::min({start_designs_.cols(), lowerbounds_.size(), upperbounds_.size()});
  start_designs_.row(0).head(bounded) =
      0.5 * lowerbounds_.head(bounded) + 0.5 * upperbounds_.head(bounded);
}

void Settings::Check(utils::LogBase* logger) const {
  const auto size = [](const auto& vector) { return static_cast<std::uint64_t>(vector.size()); };
  if (ninputs_ == 0) Refuse(L"An optimization problem was defined with < 1 parameter.");
  if (nobjectives_ == 0)
    Refuse(L"An optimization problem was defined with < 1 objective functions.");
  if (nequalities_ > ninputs_)
    Refuse(
        L"An optimization problem was defined with too many constraints (num equality constraints "
        L"> num parameter : ",
        nequalities_, L" > ", ninputs_, L").");
  if (size(lowerbounds_) != ninputs_)
    Refuse(L"The dimension of lower bounds (=", lowerbounds_.size(), L") does not match (=",
           ninputs_, L").");
  if (size(upperbounds_) != ninputs_)
    Refuse(L"The dimension of upper bounds (=", upperbounds_.size(), L") does not match (=",
           ninputs_, L").");
  if ((upperbounds_.array() <= lowerbounds_.array()).any())
    Refuse(L"At least one upper bound is not larger than the lower bound.");
  if (!lowerbounds_.allFinite())
    Refuse(L"Lower bound must be a valid finite number (no NaN, no INF).");
  if (!upperbounds_.allFinite())
    Refuse(L"Upper bound must be a valid finite number (no NaN, no INF).");

  if (start_designs_.rows() == 0) return;
  if (static_cast<std::uint64_t>(start_designs_.cols()) != ninputs_)
    Refuse(L"Start designs have wrong dimension. Expected number of cols: ", ninputs_,
           L", obtained: ", start_designs_.cols(), L".");
  for (Eigen::Index row = 0; row < start_designs_.rows(); ++row) {
    const auto design = start_designs_.row(row).transpose().array();
    if ((design < lowerbounds_.array()).any())
      utils::log::LogLine(logger, utils::log::kWarning)
          << L"At least one entry is lower than lower bound";
    if ((design > upperbounds_.array()).any())
      utils::log::LogLine(logger, utils::log::kWarning)
          << L"At least one entry is greater than upper bound";
  }
}

bool Settings::Equals(const Settings& other) const {
  return typeid(*this) == typeid(other) && ninputs_ == other.ninputs_ &&
         nobjectives_ == other.nobjectives_ && nequalities_ == other.nequalities_ &&
         ninequalities_ == other.ninequalities_ &&
         math::SameFigures(start_designs_, other.start_designs_) &&
         math::SameFigures(lowerbounds_, other.lowerbounds_) &&
         math::SameFigures(upperbounds_, other.upperbounds_) &&
         parameter_types_ == other.parameter_types_ &&
         std::equal(discrete_states_vector_.begin(), discrete_states_vector_.end(),
                    other.discrete_states_vector_.begin(), other.discrete_states_vector_.end(),
                    [](const Vector& a, const Vector& b) { return math::SameFigures(a, b); });
}

}  // namespace corvath::algorithm::optimizer
