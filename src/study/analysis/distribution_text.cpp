#include "study/analysis/distribution_text.h"

#include "foundation/exception.h"
#include "foundation/text.h"
#include "stochastics/rv_factory.h"
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

[[noreturn]] void Refuse(const std::string& text, const std::string& what) {
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
  Refuse(text, "there is no type " + Quoted(name) + "; " + NameHint(name, names, "the types are"));
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
      Refuse(text, Quoted(number) + " is not a finite number");
    arguments.push_back({name, value.value});
  }
  if (std::any_of(arguments.begin(), arguments.end(), [&](const Argument& argument) {
        return argument.name.empty() != arguments.front().name.empty();
      }))
    Refuse(text, "some of its numbers have names, some have none");
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

/// By mean and spread alone, whatever further moments the type has.
void SetMoments(RV& variable, double mean, double sd) {
  Eigen::VectorXd moments = variable.GetStats();
  moments(0) = mean;
  if (moments.size() > 1) moments(1) = sd;
  variable.SetStats(moments);
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
    if (arguments.size() != 2) Refuse(text, "mean and standard deviation are wanted");
    return SetMoments(variable, arguments[0].value, arguments[1].value);
  }
  const auto names = variable.GetParameterNames();
  const bool is_table =
      variable.GetTypeId() == types::DISCRETE || variable.GetTypeId() == types::MULTIUNIFORM;
  if (is_table ? arguments.size() % 2 != 0 : arguments.size() != names.size()) {
    std::string wanted;
    for (const std::wstring& name : names)
      wanted += (wanted.empty() ? "" : ", ") + utils::ToUtf8(name);
    Refuse(text, is_table ? "pairs of value and probability are wanted" : wanted + " are wanted");
  }
  variable.SetParameters(ByPlace(arguments));
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
  if (mean != nullptr && (sd != nullptr) != (cov != nullptr) && arguments.size() == 2)
    return SetMoments(variable, mean->value,
                      sd != nullptr ? sd->value : std::abs(cov->value * mean->value));
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
  if (!is_complete) Refuse(text, "mean= and sd= or cov=, or " + wanted + " are wanted");
  variable.SetParameters(values);
}

}  // namespace

boost::shared_ptr<RV> ParseDistribution(const std::string& text) {
  const std::string plain(Trimmed(text));
  const std::size_t open = plain.find('(');
  if (open == std::string::npos || plain.back() != ')')
    Refuse(text, "TYPE(NUMBER, ...) is wanted, as in normal(12, 0.6)");
  const std::string type(Trimmed(std::string_view(plain).substr(0, open)));
  const auto variable = algorithm::RVFactory::GetInstance().Create(ParseType(text, type));
  const auto arguments = ParseArguments(text, plain.substr(open + 1, plain.size() - open - 2));
  try {
    if (arguments.front().name.empty())
      SetByPlace(text, arguments, *variable);
    else
      SetByName(text, arguments, *variable);
  } catch (const utils::runtime_error& error) {
    Refuse(text, utils::ToUtf8(error.GetMessage()));
  }
  return variable;
}

std::pair<std::string, boost::shared_ptr<RV>> ParseNamedDistribution(const std::string& text) {
  // A name may hold colons and brackets: what counts is the last colon in front of the last
  // bracket.
  const std::size_t open = text.rfind('(');
  const std::size_t colon = open == std::string::npos ? open : text.rfind(':', open);
  if (colon == std::string::npos || colon == 0)
    Refuse(text, "NAME:TYPE(NUMBER, ...) is wanted, as in load:normal(12, 0.6)");
  return {text.substr(0, colon), ParseDistribution(text.substr(colon + 1))};
}

}  // namespace corvath::study
