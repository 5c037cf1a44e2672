#include "design/parameters/random_conversion.h"

#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "foundation/text.h"
#include "stochastics/rv_factory.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

namespace corvath::algorithm::datatypes {

namespace {

const std::wstring kMean = L"Mean value";
const std::wstring kStandardDeviationName = L"Standard deviation";

Eigen::VectorXd ToVector(const std::vector<double>& numbers) {
  return Eigen::Map<const Eigen::VectorXd>(numbers.data(),
                                           static_cast<Eigen::Index>(numbers.size()));
}

double MeanOf(const Parameter& parameter) {
  const std::vector<double>& moments = parameter.GetRandomProperties().GetMoments();
  if (!parameter.IsMixed() && !moments.empty()) return moments.front();
  return parameter.GetReferenceValue().ToDouble();
}

void SetMeanAndCov(RV& variable, double mean, double cov) {
  Eigen::VectorXd moments = variable.GetStats();
  if (moments.size() < 2)
    throw std::out_of_range("A type without a standard deviation has no coefficient of variation.");
  moments(0) = mean;
  moments(1) = std::abs(mean * cov);
  variable.SetStats(moments);
}

void TakeProperties(RV& variable, const Parameter& parameter) {
  const RandomProperties& properties = parameter.GetRandomProperties();
  if (properties.HasCov()) {
    SetMeanAndCov(variable, MeanOf(parameter), properties.GetCov());
  } else if (!properties.GetParams().empty()) {
    variable.SetParameters(ToVector(properties.GetParams()));
  } else if (!properties.GetMoments().empty()) {
    variable.SetStats(ToVector(properties.GetMoments()));
    variable.SetStat(kMean, MeanOf(parameter));
  }
}

/// The full text of an exception of this system, the narrow one of any other.
std::string TextOf(const std::exception& error) {
  if (const auto* wide = dynamic_cast<const utils::exception*>(&error))
    return utils::ToUtf8(wide->GetMessage());
  return error.what();
}

bool Contains(const std::vector<std::wstring>& names, const std::wstring& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// Moves the mean to a design's value. A type whose parameters include the mean keeps its others;
/// one without a mean stays as it is.
void MoveMean(RV& variable, double mean, const RandomProperties& properties) {
  if (Contains(variable.GetParameterNames(), kMean))
    variable.SetParameter(kMean, mean);
  else if (Contains(variable.GetMomentNames(), kMean))
    variable.SetStat(kMean, mean);
  else
    return;
  if (properties.HasCov())
    variable.SetStat(kStandardDeviationName, std::abs(mean * properties.GetCov()));
}

/// Mixed parameters, then stochastic ones, each in the order of the manager; no constants.
std::vector<const Parameter*> ScatteringParameters(const ParameterManager& manager) {
  std::vector<const Parameter*> result;
  for (const bool mixed : {true, false})
    for (const Parameter& parameter : manager.GetAllParameters())
      if (!parameter.IsConst() && parameter.HasRandom() && parameter.IsMixed() == mixed)
        result.push_back(&parameter);
  return result;
}

/// Variables in the order of `design`, with its values as means, then the others by name.
void AddAtDesign(RVSet& rvset, const std::vector<const Parameter*>& parameters,
                 const EntrySequence& design) {
  std::map<std::wstring, const Parameter*> waiting;
  for (const Parameter* parameter : parameters) waiting.emplace(parameter->GetName(), parameter);
  struct Added {
    const Parameter* parameter;
    boost::shared_ptr<RV> variable;
  };
  std::unordered_map<std::wstring, Added> added;
  for (const auto& [entry_name, value] : design) {
    if (value.IsUninitialized()) continue;
    const std::wstring name = SplitKey(entry_name).first;
    try {
      const auto found = waiting.find(name);
      if (found != waiting.end()) {
        AddParameterToRVSet(rvset, *found->second);
        added.emplace(name, Added{found->second, rvset.GetRVs().back()});
        waiting.erase(found);
      }
      const auto known = added.find(name);
      if (known != added.end())
        MoveMean(*known->second.variable, value.ToDouble(),
                 known->second.parameter->GetRandomProperties());
    } catch (const std::exception&) {
      throw;  // a set with another mean than the design's would be wrong without a word
    } catch (...) {
      utils::log::LogLine(utils::log::GetSharedStreamLog(), utils::log::kError)
          << L"AddParametersToDesign(): Caught an unexpected exception: " << name;
    }
  }
  for (const auto& [name, parameter] : waiting) AddParameterToRVSet(rvset, *parameter);
}

}  // namespace

boost::shared_ptr<RV> ParameterToRV(const Parameter& parameter) {
  try {
    boost::shared_ptr<RV> variable =
        RVFactory::GetInstance().Create(parameter.GetRandomProperties().GetType());
    variable->SetName(parameter.GetName());
    TakeProperties(*variable, parameter);
    return variable;
  } catch (const std::exception&) {
    throw utils::runtime_error(L"An error occured while transforming the parameter \"" +
                               parameter.GetName() + L"\" to the appropriate rv-type.");
  } catch (...) {
    throw std::runtime_error("An FATAL ERROR occured while transforming the parameter \"" +
                             utils::ToUtf8(parameter.GetName()) + "\" to the appropriate rv-type.");
  }
}

void AddParameterToRVSet(RVSet& rvset, const Parameter& parameter) {
  try {
    rvset.AddRV(ParameterToRV(parameter));
  } catch (const std::exception& error) {
    throw std::runtime_error(
        "An error occured during transformation from a design point to a rvset: " + TextOf(error));
  } catch (...) {
    throw std::runtime_error("A FATAL ERROR occured while transforming a design point to a rvset.");
  }
}

Eigen::MatrixXd BuildCorrelationMatrix(const ParameterManager& manager,
                                       const std::vector<std::wstring>& names) {
  std::unordered_map<std::wstring, Eigen::Index> position;
  for (const std::wstring& name : names)
    position.emplace(name, static_cast<Eigen::Index>(position.size()));
  if (position.size() != names.size())
    throw std::domain_error("Build correlation matrix impossible with not unique names");

  const auto size = static_cast<Eigen::Index>(names.size());
  Eigen::MatrixXd result = Eigen::MatrixXd::Identity(size, size);
  for (const auto& [pair, correlation] : manager.GetCoherences().GetEntries()) {
    const auto first = position.find(pair.GetFirst());
    const auto second = position.find(pair.GetSecond());
    if (first == position.end() || second == position.end()) continue;
    result(first->second, second->second) = correlation;
    result(second->second, first->second) = correlation;
  }
  return result;
}

boost::shared_ptr<RVSet> ParameterManagerToRVSet(const ParameterManager& manager,
                                                 const Design& design) {
  const std::vector<const Parameter*> parameters = ScatteringParameters(manager);
  const bool correlated = !manager.GetCoherences().IsEmpty();
  const boost::shared_ptr<RVSet> rvset =
      RVSetFactory::GetInstance().Create(correlated ? RVSet::kNataf : RVSet::kIndependent);
  if (parameters.empty() || design.GetParameters().empty()) {
    for (const Parameter* parameter : parameters) AddParameterToRVSet(*rvset, *parameter);
  } else {
    AddAtDesign(*rvset, parameters, design.GetParameters());
  }
  if (correlated && !rvset->GetRVs().empty())
    rvset->SetCorrelationMatrix(BuildCorrelationMatrix(manager, GetVariableNames(*rvset)));
  return rvset;
}

std::vector<std::wstring> GetVariableNames(const RVSet& rvset) {
  std::vector<std::wstring> names;
  names.reserve(rvset.GetNumRVs());
  for (const boost::shared_ptr<RV>& variable : rvset.GetRVs()) names.push_back(variable->GetName());
  return names;
}

Eigen::MatrixXd DesignsToMatrix(const std::vector<Design>& designs, const RVSet& rvset) {
  return InputColumns::Plain(GetVariableNames(rvset)).ToMatrix(designs);
}

std::vector<EntrySequence> MatrixToDesigns(const Eigen::Ref<const Eigen::MatrixXd>& matrix,
                                           const RVSet& rvset) {
  if (matrix.cols() != static_cast<Eigen::Index>(rvset.GetNumRVs()))
    throw std::runtime_error("Exactly as many random properties as design point elements needed!");
  return InputColumns::Plain(GetVariableNames(rvset)).ToSequences(matrix);
}

}  // namespace corvath::algorithm::datatypes
