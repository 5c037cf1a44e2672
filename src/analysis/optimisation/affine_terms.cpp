#include "analysis/optimisation/affine_terms.h"

#include "analysis/hidden_names.h"
#include "calculator/criteria_evaluation.h"
#include "calculator/parser.h"
#include "calculator/workspace.h"
#include "design/designs/design.h"
#include "design/designs/indexed_responses.h"
#include "design/indexed_name.h"
#include "foundation/text.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace corvath::analysis {
namespace {

using algorithm::datatypes::CDesignEntry;
using algorithm::datatypes::Criterion;
using algorithm::datatypes::CriterionDescription;
using algorithm::datatypes::Design;
using algorithm::datatypes::EntrySequence;
using calculator::Operator;
using calculator::ParsedText;
using calculator::Rule;
using utils::Quoted;

constexpr std::size_t kMaxTerms = 4096;
constexpr int kMaxDepth = 50;  // of criteria inside each other; a cycle among them ends here

bool IsConstant(const TermReader::Terms& terms) {
  return terms.size() == 1 && terms[0].factors.empty();
}

void Scale(TermReader::Terms& terms, double factor) {
  for (AffineTerm& term : terms) {
    term.constant *= factor;
    for (auto& column : term.factors) column.second *= factor;
  }
}

AffineTerm Sum(AffineTerm a, const AffineTerm& b) {
  a.constant += b.constant;
  for (const auto& [column, factor] : b.factors) a.factors[column] += factor;
  return a;
}

/// Raised where a text does not come apart and is to be evaluated as it stands.
struct Indivisible {};

/// The text of a node with all below it. @throws Indivisible  of a branch or macro
std::wstring TextOf(const ParsedText& text, ParsedText::Index node) {
  node = text.GetCore(node);
  const std::wstring own(text.GetText(node));
  const auto child = [&](std::size_t i) { return TextOf(text, text.Child(node, i)); };
  switch (text.GetRule(node)) {
    case Rule::kConstant:
    case Rule::kObject:
    case Rule::kString:
    case Rule::kIndex:
    case Rule::kSlice:
    case Rule::kVector:
    case Rule::kMatrix:
    case Rule::kParentheses:
      return own;
    case Rule::kFunction: {
      std::wstring all = own + L"(";
      for (std::size_t i = 0; i < text.NumChildren(node); ++i)
        all += (i > 0 ? L"," : L"") + child(i);
      return all + L")";
    }
    default:
      break;
  }
  if (text.GetOperator(node) == Operator::kNone) throw Indivisible();
  return text.IsBinary(node) ? L"(" + child(0) + own + child(1) + L")"
                             : L"(" + own + child(0) + L")";
}

double TrialInput(const StudyInput& input) {
  if (std::isfinite(input.reference)) return input.reference;
  const double middle = 0.5 * (input.lower + input.upper);
  return std::isfinite(middle) ? middle : 0.0;
}

}  // namespace

TermReader::TermReader(const StudyModel& model) : model_(model) {
  trial_inputs_.resize(model.GetNumInputs());
  for (Eigen::Index i = 0; i < trial_inputs_.size(); ++i)
    trial_inputs_(i) = TrialInput(model.GetInputs()[static_cast<std::size_t>(i)]);
}

TermReader::Terms TermReader::LargestOf(const std::wstring& text, double sign) {
  const Parts parts = ReadSide(text, sign);
  if (parts.is_vector)
    throw AnalysisError(Quoted(text) + L" is a vector of " +
                        std::to_wstring(parts.elements.size()) + L" numbers; max(abs(" + text +
                        L")) is its largest magnitude, " + text + L"[0] its first element.");
  return parts.elements.front();
}

/// "name <= right" of a name that expressions cannot use, since it holds blanks or signs.
std::optional<TermReader::Terms> TermReader::ExceedancesOfName(const std::wstring& text) {
  const auto trimmed = [](const std::wstring& part) {
    const auto first = part.find_first_not_of(L" \t");
    return first == std::wstring::npos
               ? std::wstring()
               : part.substr(first, part.find_last_not_of(L" \t") - first + 1);
  };
  for (auto at = text.find_first_of(L"<>"); at != std::wstring::npos;
       at = text.find_first_of(L"<>", at + 1)) {
    const auto behind = text.find_first_not_of(L'=', at + 1);
    if (behind == std::wstring::npos || behind > at + 2) continue;
    const std::wstring left = trimmed(text.substr(0, at)), right = trimmed(text.substr(behind));
    if ((!model_.FindQuantity(left) && !model_.FindInput(left)) ||
        !calculator::Parse(calculator::DeleteBlanks(right)).full)
      continue;
    const double sign = text[at] == L'<' ? 1.0 : -1.0;
    const Parts parts = Sum(ReadSide(left, sign), ReadSide(right, -sign));
    Terms terms;
    for (const Terms& element : parts.elements)
      terms.insert(terms.end(), element.begin(), element.end());
    return terms;
  }
  return std::nullopt;
}

TermReader::Terms TermReader::Exceedances(const std::wstring& text) try {
  if (auto terms = ExceedancesOfName(text)) return *std::move(terms);
  const ParsedText& parsed = Parse(text);
  const ParsedText::Index root = parsed.GetCore(parsed.GetRoot());
  const Operator op = parsed.GetOperator(root);
  const bool below = op == Operator::kLessEqual || op == Operator::kLess;
  if (!parsed.IsBinary(root) ||
      (!below && op != Operator::kGreaterEqual && op != Operator::kGreater))
    throw AnalysisError(L"The limit " + Quoted(text) +
                        L" does not compare; write \"left <= right\" or \"left >= right\".");
  const double sign = below ? 1.0 : -1.0;
  const Parts left = ReadSide(TextOf(parsed, parsed.Child(root, 0)), sign);
  const Parts right = ReadSide(TextOf(parsed, parsed.Child(root, 1)), -sign);
  Terms terms;
  for (const Terms& element : Sum(left, right).elements)
    terms.insert(terms.end(), element.begin(), element.end());
  return terms;
} catch (const Indivisible&) {
  throw AnalysisError(L"The two sides of the limit " + Quoted(text) + L" do not combine.");
}

TermReader::Parts TermReader::ReadSide(const std::wstring& text, double sign) {
  // A name alone may be one that expressions cannot use.
  if (model_.FindQuantity(text) || model_.FindInput(text)) return ReadName(text, sign);
  const ParsedText& parsed = Parse(text);
  RefuseHiddenNames(model_, text);
  const CriterionSequence more = more_;
  const auto columns = more_columns_;
  try {
    return Read(parsed, parsed.GetRoot(), sign);
  } catch (const Indivisible&) {
    more_ = more;
    more_columns_ = columns;
    return ReadWhole(parsed.GetText(), sign);
  }
}

const ParsedText& TermReader::Parse(const std::wstring& text) {
  const std::wstring plain = calculator::DeleteBlanks(text);
  const auto result = calculator::Parse(plain);
  if (!result.full)
    throw AnalysisError(Quoted(text) + L" is no expression from " +
                        Quoted(plain.substr(result.stop)) + L" on.");
  const ParsedText& parsed = parser_.GetWorkspace().texts.Parse(plain);
  if (parsed.Defines()) throw AnalysisError(Quoted(text) + L" must not define anything.");
  CheckNames(parsed);
  return parsed;
}

void TermReader::CheckNames(const ParsedText& text) {
  std::vector<std::wstring> names;
  for (const auto& input : model_.GetInputs()) names.push_back(input.name);
  for (const auto& quantity : model_.GetQuantities()) {
    const auto parts = algorithm::datatypes::SplitIndexedName(quantity.name);
    const std::wstring& base = parts.GetIndex() ? parts.base : quantity.name;
    if (names.empty() || names.back() != base) names.push_back(base);
  }
  for (Index node = 0; node <= text.GetRoot(); ++node) {
    if (text.GetRule(node) == Rule::kFunction && text.GetFunction(node) == nullptr)
      throw AnalysisError(L"There is no function " + Quoted(std::wstring(text.GetText(node))) +
                          L".");
    if (text.GetRule(node) != Rule::kObject || text.GetObject(node).constant != nullptr) continue;
    const std::wstring name(text.GetText(node));
    if (std::find(names.begin(), names.end(), name) == names.end())
      throw UnknownName(L"There is no input, response or criterion " + Quoted(name) + L".", name,
                        names);
  }
}

TermReader::Parts TermReader::Column(Eigen::Index column, double sign) const {
  return {{{AffineTerm{{{column, sign}}, 0.0}}}, false};
}

TermReader::Parts TermReader::Read(const ParsedText& text, Index node, double sign) {
  node = text.GetCore(node);
  switch (text.GetRule(node)) {
    case Rule::kConstant:
      return {{{AffineTerm{{}, sign * text.GetNumber(node)}}}, false};
    case Rule::kObject:
      if (text.GetObject(node).constant != nullptr) break;
      return ReadName(std::wstring(text.GetText(node)), sign);
    case Rule::kIndex:
      if (const auto found = model_.FindQuantity(std::wstring(text.GetText(node))))
        return Column(model_.GetNumInputs() + *found, sign);
      break;
    case Rule::kParentheses:
    case Rule::kOperand:
      if (text.NumChildren(node) == 1) return Read(text, text.Child(node, 0), sign);
      break;
    case Rule::kUnary:
      if (text.GetOperator(node) == Operator::kNegate)
        return Read(text, text.Child(node, 0), -sign);
      break;
    case Rule::kSum: {
      const double second = text.GetOperator(node) == Operator::kSubtract ? -sign : sign;
      return Sum(Read(text, text.Child(node, 0), sign), Read(text, text.Child(node, 1), second));
    }
    case Rule::kProduct:
      return ReadProduct(text, node, sign);
    case Rule::kFunction:
      return ReadFunction(text, node, sign);
    default:
      break;
  }
  return ReadWhole(TextOf(text, node), sign);
}

TermReader::Parts TermReader::ReadName(const std::wstring& name, double sign) {
  if (const auto input = model_.FindInput(name)) return Column(*input, sign);
  if (const auto found = model_.FindQuantity(name)) {
    const StudyQuantity& quantity = model_.GetQuantities()[static_cast<std::size_t>(*found)];
    const Parts column = Column(model_.GetNumInputs() + *found, sign);
    if (!quantity.description || depth_ >= kMaxDepth) return column;
    const auto& description = *quantity.description;
    const ParsedText& parsed =
        Parse(Criterion(description.type_, description.lhs_, description.rhs_).GetExpression());
    const std::size_t num_more = more_.size();
    ++depth_;
    Parts parts;
    try {
      parts = Read(parsed, parsed.GetRoot(), sign);
    } catch (const Indivisible&) {
      parts = column;
    }
    --depth_;
    // Where something stayed whole and nothing came apart, the criterion itself will do.
    const bool is_whole = !parts.is_vector && parts.elements.front().size() == 1;
    if (!is_whole || more_.size() == num_more) return parts;
    return column;
  }
  // A vector response by its elements.
  Parts parts;
  parts.is_vector = true;
  for (std::uint64_t k = 0;; ++k) {
    const auto element = model_.FindQuantity(algorithm::datatypes::IndexedName(name, k));
    if (!element) break;
    parts.elements.push_back(Column(model_.GetNumInputs() + *element, sign).elements.front());
  }
  return parts.elements.empty() ? ReadWhole(name, sign) : parts;
}

/// The sums of all pairs of terms, of which the largest is the sum of the largest.
TermReader::Parts TermReader::Sum(const Parts& a, const Parts& b) {
  const std::size_t n = std::max(a.elements.size(), b.elements.size());
  if ((a.is_vector && a.elements.size() != n) || (b.is_vector && b.elements.size() != n))
    throw Indivisible();
  Parts sum;
  sum.is_vector = a.is_vector || b.is_vector;
  std::size_t count = 0;
  for (std::size_t k = 0; k < n; ++k) {
    sum.elements.emplace_back();
    for (const AffineTerm& first : a.elements[a.is_vector ? k : 0])
      for (const AffineTerm& second : b.elements[b.is_vector ? k : 0]) {
        if (++count > kMaxTerms) throw Indivisible();
        sum.elements.back().push_back(analysis::Sum(first, second));
      }
  }
  return sum;
}

TermReader::Parts TermReader::ReadProduct(const ParsedText& text, Index node, double sign) {
  const Operator op = text.GetOperator(node);
  const auto factor_of = [&](Index child) {
    const Parts parts = Read(text, child, 1.0);
    const bool is_number = !parts.is_vector && IsConstant(parts.elements.front());
    return is_number ? std::optional<double>(parts.elements.front()[0].constant) : std::nullopt;
  };
  const auto scaled = [&](Index child, double factor) {
    Parts parts = Read(text, child, factor < 0.0 ? -sign : sign);
    for (Terms& element : parts.elements) Scale(element, std::abs(factor));
    return parts;
  };
  const Index left = text.Child(node, 0), right = text.Child(node, 1);
  // What reading a side adds is dropped where the product stays whole.
  const CriterionSequence more = more_;
  const auto columns = more_columns_;
  if (op == Operator::kMultiply || op == Operator::kDivide) {
    if (const auto factor = factor_of(right)) {
      const double by = op == Operator::kDivide ? 1.0 / *factor : *factor;
      if (std::isfinite(by)) return scaled(left, by);
    }
    if (op == Operator::kMultiply)
      if (const auto factor = factor_of(left)) return scaled(right, *factor);
  }
  more_ = more;
  more_columns_ = columns;
  return ReadWhole(TextOf(text, node), sign);
}

TermReader::Parts TermReader::ReadFunction(const ParsedText& text, Index node, double sign) {
  const std::wstring name(text.GetText(node));
  const bool is_largest = (name == L"max" && sign > 0.0) || (name == L"min" && sign < 0.0);
  if (name == L"abs" && sign > 0.0 && text.NumChildren(node) == 1) {
    Parts parts = Read(text, text.Child(node, 0), 1.0);
    const Parts negative = Read(text, text.Child(node, 0), -1.0);
    for (std::size_t k = 0; k < parts.elements.size(); ++k)
      parts.elements[k].insert(parts.elements[k].end(), negative.elements[k].begin(),
                               negative.elements[k].end());
    return parts;
  }
  if (is_largest) {
    Parts largest{{{}}, false};
    bool all_scalars = true;
    for (std::size_t i = 0; i < text.NumChildren(node); ++i) {
      const Parts parts = Read(text, text.Child(node, i), sign);
      all_scalars = all_scalars && !parts.is_vector;
      for (const Terms& element : parts.elements)
        largest.elements.front().insert(largest.elements.front().end(), element.begin(),
                                        element.end());
    }
    const bool one_vector = text.NumChildren(node) == 1;
    if ((all_scalars || one_vector) && largest.elements.front().size() <= kMaxTerms) return largest;
  }
  return ReadWhole(TextOf(text, node), sign);
}

/// What is not taken apart: a column of its own for each number of its value.
TermReader::Parts TermReader::ReadWhole(const std::wstring& text, double sign) {
  const math::Value value = TrialValue(text);
  if (!value.IsScalar() && !value.IsVector()) throw AnalysisError(Quoted(text) + L" is no number.");
  Parts parts;
  parts.is_vector = value.IsVector();
  const std::size_t n = parts.is_vector ? value.Size() : 1;
  for (std::size_t k = 0; k < n; ++k) {
    const std::wstring element =
        parts.is_vector ? L"(" + text + L")[" + std::to_wstring(k) + L"]" : text;
    const auto [found, is_new] =
        more_columns_.emplace(element, model_.GetNumInputs() + model_.GetNumQuantities() +
                                           static_cast<Eigen::Index>(more_.size()));
    if (is_new) more_.Append(NewName(), Criterion(CriterionDescription::RHS_ANY, L"", element));
    parts.elements.push_back(Column(found->second, sign).elements.front());
  }
  return parts;
}

/// A name that the study does not have.
std::wstring TermReader::NewName() {
  std::wstring name = L"zel_term_" + std::to_wstring(more_.size() + 1);
  while (model_.FindQuantity(name) || model_.FindInput(name)) name += L"_";
  return name;
}

/// The value at the reference inputs: its kind and length.
math::Value TermReader::TrialValue(const std::wstring& text) {
  if (trial_responses_.size() == 0 && model_.GetNumResponses() > 0)
    trial_responses_ = model_.Responses(trial_inputs_);
  EntrySequence parameters, responses;
  for (Eigen::Index i = 0; i < trial_inputs_.size(); ++i)
    parameters.Append(model_.GetInputs()[static_cast<std::size_t>(i)].name,
                      CDesignEntry(trial_inputs_(i)));
  for (Eigen::Index k = 0; k < trial_responses_.size(); ++k)
    responses.Append(model_.GetQuantities()[static_cast<std::size_t>(k)].name,
                     CDesignEntry(math::Value(trial_responses_(k))));
  Design design(std::move(parameters), {});
  design.SetResponses(algorithm::datatypes::MergeIndexedResponses(std::move(responses)));
  CriterionSequence criteria;
  for (const StudyQuantity& quantity : model_.GetQuantities())
    if (quantity.description)
      criteria.Append(quantity.name,
                      Criterion(quantity.description->type_, quantity.description->lhs_,
                                quantity.description->rhs_));
  const std::wstring name = NewName();
  criteria.Append(name, Criterion(CriterionDescription::RHS_ANY, L"", text));
  for (auto& criterion : criteria) criterion.second.Invalidate();
  design.SetCriteria(criteria);
  calculator::CriteriaOptions options;
  options.allow_all_kinds = options.allow_invalid_responses = true;
  calculator::CriteriaEvaluation(options).Calculate(design);
  const auto* const value = design.GetCriteria().Get(name).GetValue().Peek<math::Value>();
  if (value != nullptr && (value->IsScalar() || value->IsVector())) return *value;
  for (const auto& info : design.GetStatus().GetMessages())
    if (info.GetResponseName() == name && !info.GetMessage().empty()) {
      std::wstring message = info.GetMessage().front();
      const std::wstring prefix = name + L": ";
      if (message.compare(0, prefix.size(), prefix) == 0) message.erase(0, prefix.size());
      throw AnalysisError(Quoted(text) + L" fails: " + message.substr(0, message.find(L'\n')));
    }
  throw AnalysisError(Quoted(text) + L" is no number.");
}

}  // namespace corvath::analysis
