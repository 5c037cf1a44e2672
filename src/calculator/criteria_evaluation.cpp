#include "calculator/criteria_evaluation.h"

#include "calculator/dependencies.h"
#include "calculator/evaluator.h"
#include "calculator/macro_file.h"
#include "calculator/reference_order.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <new>
#include <set>
#include <utility>

namespace corvath::calculator {

namespace {

using algorithm::datatypes::Design;
using algorithm::datatypes::EntrySequence;
using algorithm::datatypes::RunInfoMeta;
using math::Value;

void Report(Design& design, RunInfoMeta::eRunInfo code, const std::wstring& name,
            const std::wstring& message) {
  design.GetStatus().Add(RunInfoMeta(code, L"", name, {message}));
}

template <class Inputs>
bool SameNames(const Inputs& inputs, const EntrySequence& entries) {
  return std::equal(inputs.begin(), inputs.end(), entries.begin(), entries.end(),
                    [](const auto& input, const auto& entry) { return input.name == entry.first; });
}

bool HasText(const EntrySequence& entries) {
  return std::any_of(entries.begin(), entries.end(), [](const auto& entry) {
    return entry.second.template Peek<std::wstring>() != nullptr;
  });
}

}  // namespace

CriteriaEvaluation::CriteriaEvaluation(CriteriaOptions options,
                                       std::optional<CalculatorTypeTraits::Macros> macros)
    : options_(options), has_macros_(macros.has_value()) {
  if (macros) calculator_.AddMacros(*macros);
}

/// Reading the user's macros takes as long as the criteria of many designs.
void CriteriaEvaluation::NeedMacros(const Design& design) {
  const auto& criteria = design.GetCriteria();
  has_macros_ = std::any_of(criteria.begin(), criteria.end(), [](const auto& criterion) {
    return criterion.second.GetLhs().find(L'$') != std::wstring::npos ||
           criterion.second.GetRhs().find(L'$') != std::wstring::npos;
  });
  if (has_macros_) calculator_.AddMacros(LoadMacros());
}

void CriteriaEvaluation::Calculate(Design& design) {
  if (!IsPlanFor(design)) return MakePlan(design);
  FollowPlan(design);
}

void CriteriaEvaluation::CalculateAgain(Design& design) {
  if (!plan_.reusable) return MakePlan(design);
  FollowPlan(design);
}

bool CriteriaEvaluation::IsLasting() const {
  return plan_.reusable && !has_macros_ && !calculator_.GetWorkspace().HasGenerator();
}

void CriteriaEvaluation::FollowPlan(Design& design) {
  SetInputs(plan_.parameters, design.GetParameters(), design);
  CheckResponses(design);
  SetInputs(plan_.responses, design.GetResponses(), design);
  for (const Step& step : plan_.steps) Run(step, design);
}

bool CriteriaEvaluation::IsPlanFor(const Design& design) const {
  const auto& criteria = design.GetCriteria();
  return plan_.reusable && SameNames(plan_.parameters, design.GetParameters()) &&
         SameNames(plan_.responses, design.GetResponses()) && !HasText(design.GetParameters()) &&
         !HasText(design.GetResponses()) &&
         std::equal(criteria.begin(), criteria.end(), plan_.criteria.begin(), plan_.criteria.end(),
                    [](const auto& criterion, const auto& known) {
                      return criterion.first == known.name &&
                             criterion.second.GetDescription() == known.description &&
                             criterion.second.NeedsEvaluation() == known.needs_evaluation;
                    });
}

/// Evaluates the design step by step, each step worked out when it is due: a criterion that has its
/// value is a plain object for those behind it.
void CriteriaEvaluation::MakePlan(Design& design) {
  Workspace& workspace = calculator_.GetWorkspace();
  plan_ = Plan();
  if (!has_macros_) NeedMacros(design);
  workspace.objects.Forget();
  workspace.assigned_entries = 0;
  workspace.macros.ForgetDefined();
  workspace.MakeRoom();
  for (const auto& [name, entry] : design.GetParameters())
    plan_.parameters.push_back(PrepareInput(name, entry));
  for (const auto& [name, entry] : design.GetResponses())
    plan_.responses.push_back(PrepareInput(name, entry));
  SetInputs(plan_.parameters, design.GetParameters(), design);
  CheckResponses(design);
  SetInputs(plan_.responses, design.GetResponses(), design);

  for (const auto& [name, criterion] : design.GetCriteria())
    plan_.criteria.push_back({name, criterion.GetDescription(), criterion.NeedsEvaluation()});
  DefineCriteria(design);
  for (const std::size_t position : FindOrder(design)) {
    const auto& [name, criterion] = design.GetCriteria()[position];
    Step& step = plan_.steps.emplace_back();
    step.position = position;
    step.object = &workspace.objects[name];
    step.settable = calculator_.IsValidIdentifier(name, true);
    if (criterion.NeedsEvaluation()) {
      step.lhs = PrepareSide(criterion.GetLhs());
      step.rhs = PrepareSide(criterion.GetRhs());
    }
    Run(step, design);
  }
  plan_.reusable = !workspace.texts.MayDefine() && ReadsOnlyFinished() &&
                   !HasText(design.GetParameters()) && !HasText(design.GetResponses());
  if (plan_.reusable) RenewPrograms();
  plan_.takes_rows = plan_.reusable && HasProgramsOnly();
}

/// What calls of macros stand for is known since they were evaluated.
void CriteriaEvaluation::RenewPrograms() {
  for (Step& step : plan_.steps)
    for (Side* side : {&step.lhs, &step.rhs})
      if (side->text && side->text->CallsMacros())
        side->program.emplace(*side->text, calculator_.GetWorkspace().macros);
}

/// Makes each criterion an object: of its expression, or of the value that it keeps.
void CriteriaEvaluation::DefineCriteria(const Design& design) {
  Workspace& workspace = calculator_.GetWorkspace();
  for (const auto& [name, criterion] : design.GetCriteria()) {
    try {
      if (criterion.NeedsEvaluation()) {
        const std::wstring expression = criterion.GetExpression();
        const ParsedText& text = workspace.texts.Parse(expression);  // or there is no object
        calculator_.SetObject(name, expression, Value());
        workspace.objects.SetText(workspace.objects[name], text);
      } else {
        calculator_.SetObject(name, L"", criterion.GetValue().ToVariant());
      }
    } catch (const std::bad_alloc&) {
      throw;                           // no fault of the criterion
    } catch (const std::exception&) {  // what is wrong shows when its sides are evaluated
    }
  }
}

/// Positions of the criteria, each behind those that it reads. Of one name the first alone counts.
std::vector<std::size_t> CriteriaEvaluation::FindOrder(const Design& design) {
  Workspace& workspace = calculator_.GetWorkspace();
  const auto& criteria = design.GetCriteria();
  std::vector<std::size_t> positions;  // of the criteria that count
  std::map<const Object*, std::size_t> numbers;
  for (std::size_t i = 0; i < criteria.size(); ++i)
    if (numbers.emplace(&workspace.objects[criteria[i].first], positions.size()).second)
      positions.push_back(i);

  std::vector<std::vector<std::size_t>> references(positions.size());
  for (std::size_t i = 0; i < positions.size(); ++i) {
    const Criterion& criterion = criteria[positions[i]].second;
    if (!criterion.NeedsEvaluation()) continue;
    std::set<std::size_t> read;
    for (const std::wstring* side : {&criterion.GetLhs(), &criterion.GetRhs()}) {
      try {
        if (side->empty()) continue;
        for (const Object* object : FindReads(workspace, workspace.texts.Parse(*side)))
          if (const auto found = numbers.find(object); found != numbers.end())
            read.insert(found->second);
      } catch (const std::bad_alloc&) {
        throw;                           // no fault of the criterion
      } catch (const std::exception&) {  // the side has no value, and reads nothing
      }
    }
    references[i].assign(read.begin(), read.end());
  }
  std::vector<std::size_t> order = OrderByReferences(references);
  for (std::size_t& number : order) number = positions[number];
  return order;
}

CriteriaEvaluation::Side CriteriaEvaluation::PrepareSide(const std::wstring& text) {
  Side side;
  if (text.empty()) return side;
  Workspace& workspace = calculator_.GetWorkspace();
  try {
    const ParsedText& parsed = workspace.texts.Parse(text);
    if (!HasCircularDependency(workspace, parsed)) {
      side.text = &parsed;
      side.program.emplace(parsed, workspace.macros);
    }
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the criterion
  } catch (const std::exception& error) {
    side.problem = utils::MessageOf(error);
  }
  return side;
}

/// Whether no step reads a criterion that comes later, as some do within a cycle.
bool CriteriaEvaluation::ReadsOnlyFinished() {
  Workspace& workspace = calculator_.GetWorkspace();
  std::map<const Object*, std::size_t> due;  // number of the step that gives an object its value
  for (std::size_t i = 0; i < plan_.steps.size(); ++i)
    if (plan_.steps[i].settable) due[plan_.steps[i].object] = i;
  const auto is_finished = [&](const Object* object, std::size_t step) {
    const auto found = due.find(object);
    return found == due.end() || found->second < step;
  };
  const auto reads_finished = [&](const Side& side, std::size_t step) {
    if (!side.text) return true;
    const std::set<const Object*> reads = FindReads(workspace, *side.text);
    return std::all_of(reads.begin(), reads.end(),
                       [&](const Object* object) { return is_finished(object, step); });
  };
  for (std::size_t i = 0; i < plan_.steps.size(); ++i)
    if (!reads_finished(plan_.steps[i].lhs, i) || !reads_finished(plan_.steps[i].rhs, i))
      return false;
  return true;
}

CriteriaEvaluation::Input CriteriaEvaluation::PrepareInput(const std::wstring& name,
                                                           const CDesignEntry& entry) {
  Input input{name, &calculator_.GetWorkspace().objects[name], L""};
  try {
    calculator_.SetObject(name, L"", entry.GetVariant());
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the criterion
  } catch (const std::exception& error) {
    input.problem = L"Cannot use object for calculations: " + utils::MessageOf(error);
  }
  return input;
}

void CriteriaEvaluation::SetInputs(const std::vector<Input>& inputs, const Entries& entries,
                                   Design& design) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const Input& input = inputs[i];
    if (!input.problem.empty())
      Report(design, RunInfoMeta::UNUSABLE_RESPONSE, input.name, input.problem);
    else if (const double* number = entries[i].second.Peek<double>())
      input.object->value = Value(*number);
    else
      input.object->value = entries[i].second.GetVariant();
  }
}

void CriteriaEvaluation::CheckResponses(Design& design) const {
  if (options_.allow_invalid_responses) return;
  for (const auto& [name, entry] : design.GetResponses()) {
    const auto* variant = entry.Peek<Value>();
    const double* number = entry.Peek<double>();
    const bool is_nan =
        number ? std::isnan(*number)
               : variant && variant->IsScalar() && std::isnan(variant->GetScalar().real());
    if (entry.IsUninitialized())
      Report(design, RunInfoMeta::UNUSABLE_RESPONSE, name, L"\"" + name + L"\" is uninitialized");
    else if (is_nan)
      Report(design, RunInfoMeta::UNUSABLE_RESPONSE, name, L"\"" + name + L"\" is not a number");
  }
}

void CriteriaEvaluation::Run(const Step& step, Design& design) {
  const std::wstring& name = design.GetCriteria()[step.position].first;
  Criterion& criterion = design.GetCriteria()[step.position].second;
  if (criterion.NeedsEvaluation()) {
    Value last;
    const auto evaluate = [&](const Side& side) {
      if (!EvaluateSide(side, name, design, last)) return CDesignEntry();
      const bool keep = options_.allow_all_kinds || last.IsScalar() ||
                        criterion.GetType() == algorithm::datatypes::CriterionDescription::RHS_ANY;
      return keep ? CDesignEntry(last) : CDesignEntry();
    };
    const CDesignEntry lhs = evaluate(step.lhs);
    const CDesignEntry rhs = evaluate(step.rhs);
    try {
      criterion.SetValues(lhs, rhs, CDesignEntry(last), true);
    } catch (const std::bad_alloc&) {
      throw;  // no fault of the criterion
    } catch (const std::exception& error) {
      Report(design, RunInfoMeta::CRITERION_VALUE_FAILED, name,
             name + L": " + utils::MessageOf(error));
      if (options_.keep_partial_values)
        criterion.SetValues(lhs, rhs, CDesignEntry(last), false);
      else
        criterion.Invalidate();
    }
  }
  // Criteria behind this one read the number and do not evaluate the expression again.
  if (!step.settable) return;
  const Value* value = criterion.GetValue().Peek<Value>();
  calculator_.GetWorkspace().objects.Define(*step.object, L"",
                                            value ? *value : criterion.GetValue().ToVariant());
}

/// False if the side has no value.
bool CriteriaEvaluation::EvaluateSide(const Side& side, const std::wstring& name, Design& design,
                                      Value& value) {
  std::wstring problem = side.problem;
  if (side.text) {
    if (!side.program->IsEmpty())
      if (const auto number = side.program->Run()) {
        value = Value(*number);
        return true;
      }
    try {
      Value result;
      Evaluator(calculator_.GetWorkspace()).Evaluate(*side.text, result);
      value = std::move(result);
      return true;
    } catch (const std::bad_alloc&) {
      throw;  // no fault of the criterion
    } catch (const std::exception& error) {
      problem = utils::MessageOf(error);
    }
  }
  if (!problem.empty())
    Report(design, RunInfoMeta::CRITERION_SIDE_FAILED, name, name + L": " + problem);
  return false;
}

Design CalculateCriteria(const Design& design, CriteriaOptions options,
                         std::optional<CalculatorTypeTraits::Macros> macros) {
  Design result = design;
  CriteriaEvaluation(options, std::move(macros)).Calculate(result);
  return result;
}

}  // namespace corvath::calculator
