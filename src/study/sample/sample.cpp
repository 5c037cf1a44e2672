#include "study/sample/sample.h"

#include "doe/factorial.h"
#include "study/refusal.h"

#include <cctype>

namespace corvath::study {
namespace {

using Eigen::Index;
using math::DOE;

/// Lower case, with a hyphen for each blank: what one likes to type.
std::string SchemeName(std::int32_t type) {
  std::string name;
  for (const wchar_t c : math::SamplingTypeText(type))
    name += c == L' ' ? '-' : static_cast<char>(std::tolower(static_cast<char>(c)));
  return name;
}

bool CanBuild(std::int32_t type) {
  return type < math::kDOptimalCustomizable || type > math::kDOptimalQuadratic;
}

/// The scheme of that name, or the only one whose name begins so.
std::int32_t FindScheme(const std::string& text, Wording wording) {
  std::vector<std::int32_t> found;
  std::string names;
  for (std::int32_t type = 0; type < math::kNoSampling; ++type) {
    const std::string name = SchemeName(type);
    if (name == text) return type;
    if (!CanBuild(type)) continue;
    if (!text.empty() && name.compare(0, text.size(), text) == 0) found.push_back(type);
    names += (names.empty() ? "" : ", ") + name;
  }
  if (found.size() == 1) return found.front();
  throw Refusal(OptionName(wording, "scheme") + ": \"" + text + "\" is " +
                (found.empty() ? "none" : "not one alone") + " of " + names);
}

bool NeedsLevel(std::int32_t type) {
  switch (type) {
    case math::kCenterPoint:
    case math::kCentralComposite:
    case math::kMixedTerms:
    case math::kKoshalLinear:
    case math::kKoshalQuadratic:
    case math::kBoxBehnken:
    case math::kFullCombinatorial:
      return false;
    default:
      return true;
  }
}

DOE MakePoints(const SampleRequest& request, std::int32_t type, const SampleInputs& inputs) {
  constexpr std::uint64_t kOnlyLevel = 2;  // fits each scheme that has no choice
  if (NeedsLevel(type) && request.n == 0)
    throw Refusal(OptionName(request.wording, "n") + ": " + SchemeName(type) +
                  " takes a number from 1");
  const std::uint64_t level = NeedsLevel(type) ? request.n : kOnlyLevel;
  const auto states = inputs.GetStateLists();
  DOE sample(inputs.GetNames().size(), request.seed, states);
  // Levels must suit the inputs. A sequence gives any number of points, even if few of them say
  // little about the inputs.
  if (math::IsGridScheme(type)) math::NumDesigns(type, sample.GetDim(), level, states);
  sample.Build(type, level, /*append=*/false);
  return sample;
}

}  // namespace

std::vector<std::string> SchemeNames() {
  std::vector<std::string> names;
  for (std::int32_t type = 0; type < math::kNoSampling; ++type)
    if (CanBuild(type)) names.push_back(SchemeName(type));
  return names;
}

Sample::Sample(const SampleRequest& request, SampleInputs inputs)
    : type_(FindScheme(request.scheme, request.wording)),
      inputs_(std::move(inputs)),
      points_(MakePoints(request, type_, inputs_)) {}

std::string Sample::GetScheme() const {
  return SchemeName(type_);
}

Eigen::MatrixXd Sample::GetPoints(std::size_t first, std::size_t count) const {
  const auto dim = static_cast<Index>(points_.GetDim());
  Eigen::MatrixXd points(static_cast<Index>(count), dim);
  for (std::size_t i = 0; i < count; ++i)
    points.row(static_cast<Index>(i)) =
        Eigen::Map<const Eigen::RowVectorXd>(points_.GetDesigns()[first + i].data(), dim);
  return inputs_.ToUnits(points, math::IsGridScheme(type_));
}

}  // namespace corvath::study
