#include "study/sample/sample_inputs.h"

#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "foundation/text.h"
#include "project/records/detailed_information.h"
#include "solver/zel_solver.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/rv_set.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace corvath::study {
namespace {

using corvath::algorithm::datatypes::DeterministicProperties;
using corvath::algorithm::datatypes::Parameter;
using corvath::zel::ScalarNumber;
using Eigen::Index;

[[noreturn]] void RefuseInput(const std::string& text, const std::string& what) {
  throw Refusal("inputs: \"" + text + "\": " + what);
}

double ParseNumber(const std::string& text, const std::string& part) {
  double value = 0.0;
  const char* begin = part.data();
  const char* const end = begin + part.size();
  if (begin != end && *begin == '+') ++begin;  // from_chars knows no plus sign
  const auto result = std::from_chars(begin, end, value);
  if (result.ec != std::errc() || result.ptr != end || begin == end || !std::isfinite(value))
    RefuseInput(text, '"' + part + "\" is not a finite number");
  return value;
}

std::vector<std::string> Split(const std::string& list) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
    end = list.find(';', begin);
    parts.push_back(list.substr(begin, end == std::string::npos ? end : end - begin));
  }
  return parts;
}

template <class State>
void SortStates(const std::string& text, std::vector<State>& states) {
  std::sort(states.begin(), states.end());
  if (std::adjacent_find(states.begin(), states.end()) != states.end())
    RefuseInput(text, "a state stands there twice");
}

/// Numbers; if all states are words, their codes: positions in ascending order, as in a training.
std::vector<double> ParseStates(const std::string& text, const std::string& list,
                                std::vector<std::string>& words) {
  std::vector<std::string> parts = Split(list);
  std::vector<double> states;
  if (std::all_of(parts.begin(), parts.end(), [](const std::string& part) {
        return ReadNumber(part).kind == CsvNumber::Kind::kText && !IsMissing(part);
      })) {
    SortStates(text, parts);
    for (std::size_t code = 0; code < parts.size(); ++code)
      states.push_back(static_cast<double>(code));
    words = std::move(parts);
    return states;
  }
  for (const std::string& part : parts) states.push_back(ParseNumber(text, part));
  SortStates(text, states);
  return states;
}

}  // namespace

SampleInputs::Domain SampleInputs::Discrete(std::vector<double> states) {
  Domain domain;
  // Halves first: the range of two doubles may not be one.
  const double first = 0.5 * states.front();
  const double range = 0.5 * states.back() - first;
  for (const double state : states)
    domain.positions.push_back(range > 0.0 ? 2.0 * ((0.5 * state - first) / range) - 1.0 : 0.0);
  domain.states = std::move(states);
  return domain;
}

SampleInputs SampleInputs::FromTexts(const std::vector<std::string>& texts) {
  SampleInputs inputs;
  for (const std::string& text : texts) {
    const std::size_t brace = text.rfind(":{");
    std::size_t name_end = brace;
    Domain domain;
    std::vector<std::string> words;
    if (brace != std::string::npos && text.back() == '}') {
      domain = Discrete(ParseStates(text, text.substr(brace + 2, text.size() - brace - 3), words));
    } else {
      const std::size_t high = text.rfind(':');
      const std::size_t low =
          high == std::string::npos || high == 0 ? std::string::npos : text.rfind(':', high - 1);
      if (low == std::string::npos) RefuseInput(text, "neither name:low:high nor name:{a;b;c}");
      domain.low = ParseNumber(text, text.substr(low + 1, high - low - 1));
      domain.high = ParseNumber(text, text.substr(high + 1));
      if (domain.low > domain.high) RefuseInput(text, "the lower bound is above the upper one");
      name_end = low;
    }
    const std::string name = text.substr(0, name_end);
    if (name.empty()) RefuseInput(text, "no name");
    if (std::find(inputs.names_.begin(), inputs.names_.end(), name) != inputs.names_.end())
      RefuseInput(text, "the name stands there twice");
    if (!words.empty()) inputs.columns_told_[name].words = std::move(words);
    inputs.names_.push_back(name);
    inputs.domains_.push_back(std::move(domain));
  }
  if (inputs.names_.empty()) throw Refusal("inputs: no inputs");
  return inputs;
}

SampleInputs SampleInputs::FromProject(const Project& project) {
  namespace types = corvath::algorithm::datatypes;
  using Kinds = corvath::enums::DeterministicProperties;
  SampleInputs inputs;
  const std::string& file = project.GetName();
  inputs.names_ = project.GetInputs();
  if (inputs.names_.empty()) throw Refusal(file + ": no inputs");
  const types::VRDB& record = project.GetRecord();
  inputs.columns_told_ = TableColumns::FromProject(record);
  std::vector<std::wstring> names;
  for (const std::string& name : inputs.names_) names.push_back(corvath::utils::FromUtf8(name));
  const types::ParameterManager& manager = record.GetParameterManager();
  if (record.GetSamplingType() == types::DetailedInformationBase::kStochasticSampling) {
    inputs.variables_ = types::ParameterManagerToRVSet(manager.GetSubset(names), types::Design());
    for (const std::wstring& name : types::GetVariableNames(*inputs.variables_))
      inputs.columns_.push_back(std::find(names.begin(), names.end(), name) - names.begin());
    return inputs;
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    const Parameter& parameter = manager.GetParameter(names[i]);
    const DeterministicProperties& property = parameter.GetDeterministicProperty(0);
    const auto refuse = [&](const char* what) {
      throw Refusal(file + ": input \"" + inputs.names_[i] + "\": " + what);
    };
    Domain domain;
    if (property.GetKind() == Kinds::CONTINUOUS) {
      constexpr double kNone = std::numeric_limits<double>::max();
      domain.low = ScalarNumber(property.GetLowerBound()).value_or(-kNone);
      domain.high = ScalarNumber(property.GetUpperBound()).value_or(kNone);
      if (!(std::abs(domain.low) < kNone && std::abs(domain.high) < kNone)) refuse("no bounds");
      if (domain.low > domain.high) refuse("the lower bound is above the upper one");
    } else {
      std::vector<double> states = project.GetStates(inputs.names_[i]);
      for (const double state : states)
        if (std::isnan(state)) refuse("a state is not a number");
      if (states.empty()) refuse("no states");
      domain = Discrete(std::move(states));
    }
    inputs.domains_.push_back(std::move(domain));
  }
  return inputs;
}

corvath::math::StateLists SampleInputs::GetStateLists() const {
  corvath::math::StateLists lists(names_.size());
  for (std::size_t i = 0; i < domains_.size(); ++i) {
    const auto& positions = domains_[i].positions;
    lists[i] =
        Eigen::Map<const Eigen::VectorXd>(positions.data(), static_cast<Index>(positions.size()));
  }
  return lists;
}

double SampleInputs::ToUnits(const Domain& domain, double x) {
  if (domain.states.empty()) {
    const double share = 0.5 * (x + 1.0);
    return std::clamp((1.0 - share) * domain.low + share * domain.high, domain.low, domain.high);
  }
  // As a rule `x` is a position itself; points on a sphere take the nearest one.
  const auto& positions = domain.positions;
  auto found = std::lower_bound(positions.begin(), positions.end() - 1, x);
  if (found != positions.begin() && x - *(found - 1) < *found - x) --found;
  return domain.states[static_cast<std::size_t>(found - positions.begin())];
}

Eigen::MatrixXd SampleInputs::ToUnits(const Eigen::MatrixXd& points, bool is_grid) const {
  if (variables_) return ToRandom(points, is_grid);
  Eigen::MatrixXd values(points.rows(), points.cols());
  for (Index k = 0; k < points.cols(); ++k)
    for (Index i = 0; i < points.rows(); ++i)
      values(i, k) = ToUnits(domains_[static_cast<std::size_t>(k)], points(i, k));
  return values;
}

Eigen::MatrixXd SampleInputs::ToRandom(const Eigen::MatrixXd& points, bool is_grid) const {
  constexpr double kDeviations = 3.0;
  Eigen::MatrixXd normal(points.cols(), points.rows());
  for (Index v = 0; v < normal.rows(); ++v)
    for (Index i = 0; i < normal.cols(); ++i) {
      const double x = points(i, columns_[static_cast<std::size_t>(v)]);
      normal(v, i) = is_grid ? kDeviations * x : corvath::math::NormalQuantile(0.5 * (x + 1.0));
    }
  const Eigen::MatrixXd physical = variables_->FromStandardGauss(normal);
  Eigen::MatrixXd values(points.rows(), points.cols());
  for (Index v = 0; v < normal.rows(); ++v)
    values.col(columns_[static_cast<std::size_t>(v)]) = physical.row(v).transpose();
  return values;
}

}  // namespace corvath::study
