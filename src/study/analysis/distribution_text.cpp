#include "study/analysis/distribution_text.h"

#include "foundation/exception.h"
#include "foundation/text.h"
#include "stochastics/rv_factory.h"
#include "study/describe/text_table.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace corvath::study {
namespace {

namespace types = enums::RandomVariable;
using algorithm::RV;

struct Argument {
  std::string name;  ///< empty: by its place
  double value;
};

[[noreturn]] void RefuseDistribution(const std::string& text, const std::string& what) {
  throw Refusal("distribution " + Quoted(text) + ": " + what);
}

std::string LowerCase(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

/// The types that a text can describe, in small letters. A kernel density takes samples, no
/// numbers.
const std::vector<std::pair<std::string, types::eType>>& Types() {
  static const std::vector<std::pair<std::string, types::eType>> all = [] {
    std::vector<std::pair<std::string, types::eType>> found;
#define ZEL_ADD(Class, name, id) \
  if (types::name != types::KERNEL) found.emplace_back(LowerCase(#name), types::name);
    ZEL_DISTRIBUTIONS(ZEL_ADD)
#undef ZEL_ADD
    return found;
  }();
  return all;
}

types::eType ParseType(const std::string& text, const std::string& name) {
  std::vector<std::string> names;
  for (const auto& [known, type] : Types()) {
    if (known == LowerCase(name)) return type;
    names.push_back(known);
  }
  RefuseDistribution(
      text, "there is no type " + Quoted(name) + "; " + NameHint(name, names, "the types are"));
}

std::vector<Argument> ParseArguments(const std::string& text, const std::string& list) {
  std::vector<Argument> arguments;
  for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
    end = list.find(',', begin);
    const std::string part(Trimmed(
        std::string_view(list).substr(begin, end == std::string::npos ? end : end - begin)));
    const std::size_t equals = part.find('=');
    const std::string name(
        equals == std::string::npos ? "" : Trimmed(std::string_view(part).substr(0, equals)));
    const std::string number(
        Trimmed(std::string_view(part).substr(equals == std::string::npos ? 0 : equals + 1)));
    const CsvNumber value = ReadNumber(number);
    if (value.kind != CsvNumber::Kind::kNumber || !std::isfinite(value.value))
      RefuseDistribution(text, Quoted(number) + " is not a finite number");
    arguments.push_back({name, value.value});
  }
  if (std::any_of(arguments.begin(), arguments.end(), [&](const Argument& argument) {
        return argument.name.empty() != arguments.front().name.empty();
      }))
    RefuseDistribution(text, "some of its numbers have names, some have none");
  return arguments;
}

/// "s" of "Standard deviation s".
std::string ShortName(const std::wstring& name) {
  std::string text = utils::ToUtf8(name);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text.substr(text.find_last_of(' ') + 1);
}

Eigen::VectorXd ByPlace(const std::vector<Argument>& arguments) {
  Eigen::VectorXd values(static_cast<Eigen::Index>(arguments.size()));
  for (Eigen::Index i = 0; i < values.size(); ++i)
    values(i) = arguments[static_cast<std::size_t>(i)].value;
  return values;
}

bool AreTaken(const Eigen::VectorXd& given, const Eigen::VectorXd& taken) {
  constexpr double kRounding = 1e-6;  // of searches for parameters as well
  for (Eigen::Index i = 0; i < given.size(); ++i)
    if (!(std::abs(taken(i) - given(i)) <= kRounding * std::abs(given(i)))) return false;
  return true;
}

/// By mean and spread alone, whatever further moments the type has.
void SetMoments(const std::string& text, double mean, double sd, RV& variable) {
  Eigen::VectorXd moments = variable.GetStats();
  moments(0) = mean;
  if (moments.size() > 1) moments(1) = sd;
  variable.SetStats(moments);
  if (!AreTaken(moments.head(std::min<Eigen::Index>(moments.size(), 2)), variable.GetStats()))
    RefuseDistribution(text, "the type has no such mean and standard deviation; the nearest are " +
                                 Short(variable.GetStats()(0)) + " and " +
                                 Short(variable.GetStats()(1)));
}

/// A random variable moves what is outside its domain to the nearest allowed value; from a person
/// it is a mistake.
void SetParameters(const std::string& text, const Eigen::VectorXd& values, RV& variable) {
  variable.SetParameters(values);
  const Eigen::VectorXd& taken = variable.GetParameters();
  if (AreTaken(values, taken)) return;
  const auto names = variable.GetParameterNames();
  std::string nearest;
  for (std::size_t i = 0; i < names.size(); ++i)
    nearest += (nearest.empty() ? "" : ", ") + utils::ToUtf8(names[i]) + " = " +
               Short(taken(static_cast<Eigen::Index>(i)));
  RefuseDistribution(text, "these numbers are not allowed; allowed would be " + nearest);
}

/// Pairs of value and probability, of MULTIUNIFORM the probability up to the value. Random
/// variables scale them to 1; from a person another sum is a mistake.
void SetTable(const std::string& text, const Eigen::VectorXd& table, RV& variable) {
  constexpr double kRounding = 1.001e-3;  // thirds may be written as 0.333
  if (table.size() % 2 != 0 || table.size() < 4)
    RefuseDistribution(text, "two or more pairs of value and probability are wanted");
  double first = 0.0, last = table(table.size() - 1);
  if (variable.GetTypeId() == types::MULTIUNIFORM)
    first = table(1);
  else
    for (Eigen::Index i = 1; i + 2 < table.size(); i += 2) last += table(i);
  variable.SetParameters(table);
  if (std::abs(first) > kRounding)
    RefuseDistribution(text, "the probabilities start from " + Short(first) + ", not from 0");
  if (std::abs(last - 1.0) > kRounding)
    RefuseDistribution(text, std::string("the probabilities ") +
                                 (variable.IsDiscrete() ? "add up to " : "rise to ") + Short(last) +
                                 ", not to 1");
}

bool TakesMoments(types::eType type) {
  switch (type) {
    case types::NORMAL:
    case types::LOGNORMAL:
    case types::EXPONENTIAL:
    case types::GUMBEL:
    case types::WEIBULL:
    case types::FRECHET:
      return true;
    default:
      return false;
  }
}

void SetByPlace(const std::string& text, const std::vector<Argument>& arguments, RV& variable) {
  if (TakesMoments(variable.GetTypeId())) {
    if (arguments.size() != 2) RefuseDistribution(text, "mean and standard deviation are wanted");
    return SetMoments(text, arguments[0].value, arguments[1].value, variable);
  }
  if (variable.GetTypeId() == types::DISCRETE || variable.GetTypeId() == types::MULTIUNIFORM)
    return SetTable(text, ByPlace(arguments), variable);
  const auto names = variable.GetParameterNames();
  if (arguments.size() != names.size()) {
    std::string wanted;
    for (const std::wstring& name : names)
      wanted += (wanted.empty() ? "" : ", ") + utils::ToUtf8(name);
    RefuseDistribution(text, wanted + (names.size() > 1 ? " are wanted" : " is wanted"));
  }
  SetParameters(text, ByPlace(arguments), variable);
}

void SetByName(const std::string& text, const std::vector<Argument>& arguments, RV& variable) {
  const auto find = [&](const std::string& name) -> const Argument* {
    const auto found = std::find_if(arguments.begin(), arguments.end(),
                                    [&](const Argument& a) { return a.name == name; });
    return found == arguments.end() ? nullptr : &*found;
  };
  const Argument* const mean = find("mean");
  const Argument* const sd = find("sd");
  const Argument* const cov = find("cov");
  if (variable.GetTypeId() == types::DISCRETE || variable.GetTypeId() == types::MULTIUNIFORM)
    RefuseDistribution(text, "pairs of value and probability are wanted, without names");
  if (mean != nullptr && (sd != nullptr) != (cov != nullptr) && arguments.size() == 2)
    return SetMoments(text, mean->value,
                      sd != nullptr ? sd->value : cov->value * std::abs(mean->value), variable);
  const bool is_mean_alone = variable.GetParameters().size() == 1;  // BERNOULLI, POISSON
  if (is_mean_alone && mean != nullptr && arguments.size() == 1)
    return SetParameters(text, ByPlace(arguments), variable);
  if (is_mean_alone) RefuseDistribution(text, "mean= is wanted");
  std::string wanted;
  Eigen::VectorXd values = variable.GetParameters();
  const auto names = variable.GetParameterNames();
  bool is_complete = arguments.size() == names.size();
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string name = ShortName(names[i]);
    wanted += (wanted.empty() ? "" : ", ") + name + '=';
    const Argument* const argument = find(name);
    is_complete = is_complete && argument != nullptr;
    if (is_complete) values(static_cast<Eigen::Index>(i)) = argument->value;
  }
  if (!is_complete) RefuseDistribution(text, "mean= and sd= or cov=, or " + wanted + " are wanted");
  SetParameters(text, values, variable);
}

}  // namespace

boost::shared_ptr<RV> ParseDistribution(const std::string& text) {
  const std::string plain(Trimmed(text));
  const std::size_t open = plain.find('(');
  if (open == std::string::npos || plain.back() != ')')
    RefuseDistribution(text, "TYPE(NUMBER, ...) is wanted, as in normal(12, 0.6)");
  const std::string type(Trimmed(std::string_view(plain).substr(0, open)));
  const auto variable = algorithm::RVFactory::GetInstance().Create(ParseType(text, type));
  const auto arguments = ParseArguments(text, plain.substr(open + 1, plain.size() - open - 2));
  try {
    if (arguments.front().name.empty())
      SetByPlace(text, arguments, *variable);
    else
      SetByName(text, arguments, *variable);
  } catch (const utils::runtime_error& error) {
    // Behind "RV 'RV' of type 'NORMAL'", which the text tells better.
    const std::string message = utils::ToUtf8(error.GetMessage());
    const std::size_t prefix = message.find("': ");
    RefuseDistribution(text, prefix == std::string::npos ? message : message.substr(prefix + 3));
  }
  return variable;
}

std::pair<std::string, boost::shared_ptr<RV>> ParseNamedDistribution(const std::string& text) {
  // A name may hold colons and brackets: what counts is the last colon in front of the last
  // bracket.
  const std::size_t open = text.rfind('(');
  const std::size_t colon = open == std::string::npos ? open : text.rfind(':', open);
  if (colon == std::string::npos || colon == 0)
    RefuseDistribution(text, "NAME:TYPE(NUMBER, ...) is wanted, as in load:normal(12, 0.6)");
  return {std::string(Trimmed(std::string_view(text).substr(0, colon))),
          ParseDistribution(text.substr(colon + 1))};
}

}  // namespace corvath::study
