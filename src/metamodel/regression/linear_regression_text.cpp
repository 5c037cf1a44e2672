#include "foundation/text_stream.h"
#include "metamodel/regression/linear_regression.h"

/// The texts of a linear regression: name, description and the polynomial as a formula.
namespace corvath::math::metamodel {

namespace {

/// `names` when there are m of them, else those of the settings, else X1, X2, ...
std::vector<std::wstring> InputNames(const std::vector<std::wstring>& names,
                                     const std::list<std::wstring>& stored, std::size_t m) {
  if (names.size() == m) return names;
  if (stored.size() == m) return {stored.begin(), stored.end()};
  std::vector<std::wstring> numbered;
  for (std::size_t j = 1; j <= m; ++j) numbered.push_back(L"X" + std::to_wstring(j));
  return numbered;
}

}  // namespace

std::wstring LinearRegression::GetName(bool short_form) const {
  std::wstring name = L"Linear Regression";
  if (!short_form) name += L" | " + std::to_wstring(settings_.GetOrder());
  return name;
}

std::wstring LinearRegression::GetDescription() const {
  utils::WideTextStream text;
  text << GetName(false);
  if (coefficients_.size() > 0) {
    text << L" | ( ";
    for (const double coefficient : coefficients_) text << coefficient << L" ";
    text << L") | ";
  }
  text << SurrogateBase::GetDescription();
  return text.str();
}

std::wstring LinearRegression::GetModelFunction(const std::vector<std::wstring>& names) const {
  if (settings_.HasBoxCoxParameter())
    return L"No model function for Box-Cox transformation available";
  if (!IsBuilt()) return L"No valid model available";
  // The same terms fitted in the user's coordinates.
  LinearRegressionSettings plain_settings = settings_;
  plain_settings.SetCoordTransform(transform::TransformType::kNone);
  plain_settings.SetValueTransform(transform::TransformType::kNone);
  plain_settings.SetLimitTransform(transform::TransformType::kNone);
  LinearRegression plain(*points_, values_, plain_settings, weights_);
  if (!plain.Build()) return L"No valid model available";

  const auto m = static_cast<std::size_t>(GetNumberInputs());
  const std::vector<std::wstring> inputs = InputNames(names, settings_.GetInputNames(), m);
  utils::WideTextStream text;
  const double* coefficient = plain.coefficients_.data();
  text << *coefficient++;
  const auto write_coefficient = [&] {
    text << (*coefficient >= 0.0 ? L" + " : L" ") << *coefficient << L"*";
    ++coefficient;
  };
  const BitVector main = settings_.GetMainTermSelection();
  for (std::size_t t = 0; t < main.size(); ++t) {
    if (!main[t]) continue;
    write_coefficient();
    text << inputs[t % m];
    if (t >= m) text << L"^" << t / m + 1;
  }
  const BitVector interactions = settings_.GetInteractionSelection();
  std::size_t pair = 0;
  for (std::size_t i = 0; i < m && !interactions.empty(); ++i) {
    for (std::size_t j = i + 1; j < m; ++j) {
      if (!interactions[pair++]) continue;
      write_coefficient();
      text << inputs[i] << L"*" << inputs[j];
    }
  }
  return text.str();
}

}  // namespace corvath::math::metamodel
