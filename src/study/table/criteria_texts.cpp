#include "study/table/criteria_texts.h"

#include "calculator/calculator.h"
#include "calculator/criteria_evaluation.h"
#include "calculator/parsed_text.h"
#include "calculator/parser.h"
#include "calculator/workspace.h"
#include "design/designs/design.h"
#include "design/designs/indexed_responses.h"
#include "foundation/text.h"
#include "study/refusal.h"
#include "study/table/criterion_names.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"
#include "training/criteria_check.h"
#include "training/train_study.h"

#include <set>
#include <utility>

namespace corvath::study {
namespace {

using corvath::algorithm::datatypes::CDesignEntry;
using corvath::algorithm::datatypes::CriterionSequence;
using corvath::algorithm::datatypes::Design;
using corvath::algorithm::datatypes::EntrySequence;
using corvath::calculator::DeleteBlanks;
using corvath::calculator::ParsedText;
using corvath::calculator::Rule;
using corvath::training::TrainingTable;
using corvath::utils::ToUtf8;
using Index = Eigen::Index;

[[noreturn]] void RefuseCriterion(const std::wstring& name, const std::string& what) {
  throw Refusal("criterion " + Quoted(ToUtf8(name)) + ": " + what);
}

/// The first design that failed for no response; a table without one gives responses of 1.
Design MakeTrialDesign(const TrainingTable& table, const CriterionSequence& criteria) {
  Index row = 0;
  while (row < table.values.rows() && !table.values.row(row).allFinite()) ++row;
  const bool complete = row < table.values.rows();
  EntrySequence parameters;
  for (std::size_t i = 0; i < table.inputs.size(); ++i)
    parameters.Append(table.inputs[i],
                      CDesignEntry(table.points(complete ? row : 0, static_cast<Index>(i))));
  EntrySequence responses;
  for (std::size_t k = 0; k < table.responses.size(); ++k)
    responses.Append(table.responses[k],
                     CDesignEntry(complete ? table.values(row, static_cast<Index>(k)) : 1.0));
  Design design(std::move(parameters), corvath::algorithm::datatypes::DesignId(1));
  design.SetResponses(MergeIndexedResponses(std::move(responses)));
  design.SetCriteria(criteria);
  return design;
}

/// The names that texts may use: those of the trial design.
std::set<std::wstring> CollectNames(const Design& design) {
  std::set<std::wstring> names;
  for (const auto& entry : design.GetParameters()) names.insert(entry.first);
  for (const auto& entry : design.GetResponses()) names.insert(entry.first);
  for (const auto& criterion : design.GetCriteria()) names.insert(criterion.first);
  return names;
}

/// Looks for names and functions that there are not, in all branches of a text.
class NameCheck {
 public:
  NameCheck(const std::wstring& criterion, const std::set<std::wstring>& names)
      : criterion_(criterion), names_(names) {}

  void Run(const std::wstring& text) {
    if (text.empty()) return;
    const ParsedText& parsed = workspace_.texts.Parse(text);
    const std::set<std::wstring> assigned = CollectAssigned(parsed);
    std::vector<ParsedText::Index> open{parsed.GetRoot()};  // chains of operators nest deep
    while (!open.empty()) {
      const ParsedText::Index node = open.back();
      open.pop_back();
      if (!Visit(parsed, node, assigned)) continue;
      for (std::size_t i = parsed.NumChildren(node); i-- > 0;)  // the first one is next
        open.push_back(parsed.Child(node, i));
    }
  }

 private:
  /// The names to which the text gives a meaning itself.
  static std::set<std::wstring> CollectAssigned(const ParsedText& text) {
    std::set<std::wstring> assigned;
    for (ParsedText::Index node = 0; node <= text.GetRoot(); ++node)
      if (text.GetRule(node) == Rule::kAssign)
        for (std::size_t i = 0; i + 1 < text.NumChildren(node); ++i)
          assigned.emplace(text.GetText(text.Child(node, i)));
    return assigned;
  }

  /// Visits the node itself. @return  whether its children are to be visited
  bool Visit(const ParsedText& text, ParsedText::Index node,
             const std::set<std::wstring>& assigned) const {
    switch (text.GetRule(node)) {
      case Rule::kAssignMacro:  // names of its body mean something where it is called
      case Rule::kString:
        return false;
      case Rule::kObject: {
        const auto& object = text.GetObject(node);
        if (assigned.count(object.name) > 0) return false;
        if ((object.constant != nullptr) != (names_.count(object.name) > 0)) return false;
        if (object.constant == nullptr) RefuseName(object.name);
        RefuseCriterion(criterion_,
                        Quoted(ToUtf8(object.name)) +
                            " is a constant of expressions and hides the column of this name; "
                            "write `" +
                            ToUtf8(object.name) + "` for the column");
      }
      case Rule::kFunction:
        if (text.GetFunction(node) == nullptr)
          RefuseCriterion(criterion_, "there is no function " +
                                          Quoted(ToUtf8(std::wstring(text.GetText(node)))));
        return true;
      default:
        return true;
    }
  }

  [[noreturn]] void RefuseName(const std::wstring& name) const {
    std::vector<std::string> usable;
    for (const std::wstring& known : names_) {
      if (CanBeUsed(known)) {
        if (known != criterion_) usable.push_back(ToUtf8(known));
      } else if (DeleteBlanks(known).compare(0, name.size(), name) == 0) {
        RefuseCriterion(criterion_, "expressions cannot use the name " + Quoted(ToUtf8(known)) +
                                        "; write " + IdentifierOf(ToUtf8(known)) + " or `" +
                                        ToUtf8(known) +
                                        "`, or rename the column (letters, digits and _)");
      }
    }
    RefuseCriterion(criterion_, "there is no input, response or criterion " + Quoted(ToUtf8(name)) +
                                    "; " + NameHint(ToUtf8(name), usable, "there are"));
  }

  const std::wstring& criterion_;
  const std::set<std::wstring>& names_;
  corvath::calculator::Workspace workspace_;
};

/// The first line of a message, without the name that it begins with; those behind it show the place
/// in a text.
std::string FirstLine(const corvath::algorithm::datatypes::RunInfoMeta& info,
                      const std::wstring& name) {
  std::wstring text = info.GetMessage().empty() ? L"it fails" : info.GetMessage().front();
  const std::wstring prefix = name + L": ";
  if (text.compare(0, prefix.size(), prefix) == 0) text.erase(0, prefix.size());
  return ToUtf8(text.substr(0, text.find(L'\n')));
}

}  // namespace

void TryCriteria(Design design, std::size_t first) {
  using corvath::algorithm::datatypes::RunInfoMeta;
  CCalculator calculator;
  std::set<std::wstring> tried;
  for (std::size_t i = 0; i < design.GetCriteria().size(); ++i) {
    const auto& [name, criterion] = design.GetCriteria()[i];
    if (i >= first) tried.insert(name);
    if (calculator.IsValidIdentifier(name, /*check_constants=*/true))
      calculator.SetObject(name, criterion.GetExpression(), {});
  }
  for (const std::wstring& name : tried)
    if (calculator.IsValidIdentifier(name, true) && calculator.HasCircularDependency(name))
      RefuseCriterion(name, "it depends on itself");
  corvath::calculator::CriteriaOptions options;
  options.keep_partial_values = true;  // to see which side it is that has none
  corvath::calculator::CriteriaEvaluation(options).Calculate(design);
  for (const RunInfoMeta& info : design.GetStatus().GetMessages())
    if (info.GetRunInfo() == RunInfoMeta::CRITERION_SIDE_FAILED &&
        tried.count(info.GetResponseName()) > 0)
      RefuseCriterion(info.GetResponseName(), FirstLine(info, info.GetResponseName()));
  for (const auto& [name, criterion] : design.GetCriteria()) {
    if (tried.count(name) == 0) continue;
    if (!criterion.GetLhs().empty() && criterion.GetLhsValue().IsUninitialized())
      RefuseCriterion(name, "its left side is no number");
    if (criterion.GetRhsValue().IsUninitialized())
      RefuseCriterion(name, "its right side is no number");
    const auto* const value = criterion.GetValue().Peek<corvath::math::Value>();
    if (value != nullptr && value->IsBoolean())
      RefuseCriterion(name, "it is true or false, no number; <= and >= alone make a limit");
    if (value != nullptr && !value->IsScalar()) RefuseCriterion(name, "it is no number");
  }
}

CriterionSequence ParseCriteria(const std::vector<std::string>& texts, const TrainingTable& table) {
  CriterionSequence criteria;
  if (texts.empty()) return criteria;
  try {
    for (const std::string& text : texts)
      corvath::training::ParseCriterion(corvath::utils::FromUtf8(text), criteria);
    corvath::training::RequireUsableCriteria(table, criteria);
  } catch (const corvath::training::TrainingError& error) {
    throw Refusal(ToUtf8(error.GetMessage()));
  }
  for (const auto& criterion : criteria)
    if (!CanBeUsed(criterion.first))
      RefuseCriterion(criterion.first,
                      "expressions cannot use this name; write letters, digits and _ that "
                      "are no constant");
  const Design design = MakeTrialDesign(table, criteria);
  const std::set<std::wstring> names = CollectNames(design);
  for (const auto& [name, criterion] : criteria) {
    NameCheck check(name, names);
    check.Run(criterion.GetLhs());
    check.Run(criterion.GetRhs());
  }
  TryCriteria(design);
  return criteria;
}

}  // namespace corvath::study
