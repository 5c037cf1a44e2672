#include "exchange/project_reader.h"

#include "exchange/criteria_reader.h"
#include "exchange/model_reader.h"
#include "foundation/constants.h"
#include "foundation/text.h"
#include "solver/file_signature.h"
#include "solver/zel_solver.h"

#include <algorithm>
#include <cmath>

namespace corvath::exchange {

namespace {

using algorithm::datatypes::Parameter;
using algorithm::datatypes::SurrogateInfo;
using utils::FromUtf8;
using utils::ToUtf8;
using zel::ZELSolver;

using math::kNaN;

/// "wing" of "models/wing.vrdb".
std::string StemOf(const std::string& path) {
  const std::string file = path.substr(path.find_last_of('/') + 1);
  const std::size_t dot = file.find_last_of('.');
  return dot == std::string::npos || dot == 0 ? file : file.substr(0, dot);
}

std::vector<double> StatesOf(const Parameter& parameter) {
  std::vector<double> states;
  if (!parameter.IsOptimization()) return states;
  const auto& domain = parameter.GetDeterministicProperty(0);
  using Kind = enums::DeterministicProperties;
  if (domain.GetKind() == Kind::CONTINUOUS) return states;
  for (const auto& state : domain.GetDiscreteStates())
    if (domain.GetKind() != Kind::ORDINAL_BY_VALUE)  // models take the position
      states.push_back(static_cast<double>(states.size()));
    else if (const auto number = zel::ScalarNumber(state))
      states.push_back(*number);
  return states;
}

InputDescription DescribeInput(ZELSolver& solver, const std::wstring& name) {
  InputDescription input;
  input.name = ToUtf8(name);
  input.lower = input.upper = input.reference = kNaN;
  const auto& bounds = solver.GetInputBounds();
  if (const auto found = bounds.find(name); found != bounds.end()) {
    input.lower = zel::ScalarNumber(found->second.first).value_or(kNaN);
    input.upper = zel::ScalarNumber(found->second.second).value_or(kNaN);
  }
  const Parameter* const parameter = solver.GetProject().GetParameterManager().FindParameter(name);
  if (parameter == nullptr) return input;
  input.unit = ToUtf8(parameter->GetUnit());
  input.reference = zel::ScalarNumber(parameter->GetReferenceValue()).value_or(kNaN);
  input.states = StatesOf(*parameter);
  return input;
}

/// Of each column of the model the position of its input.
std::vector<std::size_t> ColumnsOf(const SurrogateInfo& info,
                                   const std::vector<std::wstring>& inputs) {
  const std::vector<std::wstring> names = info.GetParameterNames();
  std::vector<std::size_t> columns;
  for (const std::wstring& name : names) {
    const auto found = std::find(inputs.begin(), inputs.end(), name);
    if (found != inputs.end()) columns.push_back(static_cast<std::size_t>(found - inputs.begin()));
  }
  if (columns.size() != names.size() || columns.size() != inputs.size())
    throw NotDescribable("its model does not run over the inputs of the project");
  return columns;
}

ResponseDescription DescribeResponse(const SurrogateInfo& info,
                                     const std::vector<std::wstring>& inputs) {
  ResponseDescription response;
  const auto& surrogate = info.GetSurrogate();
  if (!surrogate) throw NotDescribable("it has no model");
  const std::vector<std::size_t> columns = ColumnsOf(info, inputs);
  response.model_name = ToUtf8(surrogate->GetName(false));
  response.model = ReadModel(*surrogate, columns);
  response.gradient_steps = ReadGradientSteps(*surrogate, columns);
  if (auto error = ReadLocalError(*surrogate, response.model)) {
    response.has_error = true;
    response.error = std::move(*error);
  }
  response.cop = info.GetAppraisalData().HasCoP() ? info.GetAppraisalData().GetCoP() : kNaN;
  for (const std::wstring& input : inputs)
    response.single_cops.push_back(info.HasSingleCoP(input) ? info.GetSingleCoP(input) : kNaN);
  return response;
}

void RequireKnown(const std::vector<std::string>& responses,
                  const std::vector<std::wstring>& outputs) {
  for (const std::string& name : responses)
    if (std::find(outputs.begin(), outputs.end(), FromUtf8(name)) == outputs.end())
      throw NotDescribable("no response \"" + name + '"');
}

}  // namespace

ProjectDescription DescribeProject(ZELSolver& solver, const std::string& path,
                                   const std::vector<std::string>& responses) {
  ProjectDescription project;
  project.name = path.empty() ? "project" : StemOf(path);
  if (!path.empty()) project.signature = zel::FileSignature(FromUtf8(path));
  const std::vector<std::wstring>& inputs = solver.GetInputNames();
  for (const std::wstring& name : inputs) project.inputs.push_back(DescribeInput(solver, name));

  RequireKnown(responses, solver.GetOutputNames());
  std::vector<std::wstring> described;
  for (const std::wstring& name : solver.GetOutputNames()) {
    const std::string text = ToUtf8(name);
    if (!responses.empty() &&
        std::find(responses.begin(), responses.end(), text) == responses.end())
      continue;
    try {
      project.responses.push_back(
          DescribeResponse(solver.GetSurrogateInfos().GetSurrogateInfo(name), inputs));
      project.responses.back().name = text;
      described.push_back(name);
    } catch (const NotDescribable& error) {
      project.responses_left_out.push_back({text, error.what()});
    }
  }
  ReadCriteria(solver.GetCriteriaTemplates(), inputs, described, project.criteria,
               project.criteria_left_out);
  return project;
}

}  // namespace corvath::exchange
