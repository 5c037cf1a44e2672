#include "stochastics/random_variable.h"

#include "archive/instantiate.h"
#include "foundation/closeness.h"
#include "foundation/exception.h"
#include "foundation/log.h"
#include "foundation/text_stream.h"
#include "foundation/until_unload.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath {

namespace enums::RandomVariable {

namespace {

/// Both directions of id and text.
struct TypeTexts {
  std::map<int, std::wstring> texts = {
#define ZEL_TEXT(Class, name, id) {id, L## #name},
      ZEL_DISTRIBUTIONS(ZEL_TEXT)
#undef ZEL_TEXT
  };
  std::map<std::wstring, eType> ids;

  TypeTexts() {
    for (const auto& [id, text] : texts) ids.emplace(text, static_cast<eType>(id));
  }
};

utils::UntilUnload<TypeTexts> type_texts;

const TypeTexts& Texts() {
  return type_texts.Get();
}

}  // namespace

const std::wstring& ToText(int type) {
  const auto found = Texts().texts.find(type);
  if (found == Texts().texts.end())
    throw utils::runtime_error(L"Unknown RV type ident '" + std::to_wstring(type) + L"'");
  return found->second;
}

eType FromText(const std::wstring& text) {
  const auto found = Texts().ids.find(text);
  if (found == Texts().ids.end()) throw utils::runtime_error(L"Unknown RV type '" + text + L"'");
  return found->second;
}

}  // namespace enums::RandomVariable

namespace algorithm {

namespace {

constexpr double kMinCoefficientOfVariation = 1e-6;

bool Agree(const Eigen::VectorXd& x, const Eigen::VectorXd& y) {
  return x.size() == y.size() && std::equal(x.begin(), x.end(), y.begin(),
                                            [](double a, double b) { return math::IsClose(a, b); });
}

}  // namespace

RV::~RV() = default;

double RV::GetLowerBound() const {
  return -std::numeric_limits<double>::infinity();
}

double RV::GetUpperBound() const {
  return std::numeric_limits<double>::infinity();
}

double RV::PMF(double) const {
  return 0.0;
}

Eigen::MatrixXd RV::GetStates() const {
  return {};
}

void RV::Fit(const Eigen::MatrixXd&) {
  throw utils::runtime_error(L"RV '" + name_ + L"' of type '" +
                             std::to_wstring(static_cast<int>(GetTypeId())) +
                             L"' can not be fitted by data. ");
}

bool RV::operator==(const RV& other) const {
  return GetTypeId() == other.GetTypeId() && Agree(RV_Parameter, other.RV_Parameter) &&
         Agree(RV_Statistical_Moments, other.RV_Statistical_Moments);
}

std::wstring RV::GetTypeName() const {
  return enums::RandomVariable::ToText(GetTypeId());
}

double RV::GetParameter(const std::wstring& ident) const {
  return RV_Parameter(
      Position(RV_internal_parameter_map, GetParameterNames(), ident, RV_Parameter.size()));
}

void RV::SetParameter(const std::wstring& ident, double value) {
  const Eigen::Index position =
      Position(RV_internal_parameter_map, GetParameterNames(), ident, RV_Parameter.size());
  if (math::IsClose(RV_Parameter(position), value)) return;
  const Eigen::VectorXd parameters = RV_Parameter;
  const Eigen::VectorXd moments = RV_Statistical_Moments;
  try {
    RV_Parameter(position) = value;
    SetParameters(Eigen::VectorXd(RV_Parameter));
  } catch (...) {
    RV_Parameter = parameters;
    RV_Statistical_Moments = moments;
    throw;
  }
}

double RV::GetStat(const std::wstring& ident) const {
  return RV_Statistical_Moments(
      Position(RV_internal_moments_map, GetMomentNames(), ident, RV_Statistical_Moments.size()));
}

void RV::SetStat(const std::wstring& ident, double value) {
  const Eigen::Index position =
      Position(RV_internal_moments_map, GetMomentNames(), ident, RV_Statistical_Moments.size());
  if (math::IsClose(RV_Statistical_Moments(position), value)) return;
  const Eigen::VectorXd parameters = RV_Parameter;
  const Eigen::VectorXd moments = RV_Statistical_Moments;
  try {
    RV_Statistical_Moments(position) = value;
    SetStats(Eigen::VectorXd(RV_Statistical_Moments));
  } catch (...) {
    RV_Parameter = parameters;
    RV_Statistical_Moments = moments;
    throw;
  }
}

Eigen::Index RV::Position(IdentMap& map, const std::vector<std::wstring>& names,
                          const std::wstring& ident, Eigen::Index size) const {
  const std::wstring instance = L"random variable instance '" + name_ + L"' of type '";
  if (map.empty()) {
    IdentMap built;
    for (const std::wstring& name : names)
      if (!built.emplace(name, built.size()).second)
        throw utils::runtime_error(L"The " + instance + GetTypeName() +
                                   L"' needs unique idents for the individual Get and Set methods."
                                   L" The ident '" +
                                   name + L"' is not unique.");
    map.swap(built);
  }
  // A stored map may hold anything.
  const auto found = map.find(ident);
  if (found == map.end() || found->second >= static_cast<std::uint64_t>(size))
    throw utils::runtime_error(L"Cannot find any unique identifier named '" + ident +
                               L"' for the " + instance + GetTypeName() + L"'");
  return static_cast<Eigen::Index>(found->second);
}

void RV::Raise(const std::wstring& text) const {
  throw utils::runtime_error(L"RV '" + name_ + L"' of type '" + GetTypeName() + L"'" + text);
}

void RV::RequireCount(const Eigen::VectorXd& values, Eigen::Index expected,
                      const std::wstring& text) const {
  if (values.size() != expected) Raise(text + std::to_wstring(values.size()));
  RequireMagnitude(values);
}

void RV::RequireMagnitude(const Eigen::VectorXd& values) const {
  for (const double value : values)
    if (!(std::abs(value) <= kMaxMagnitude))  // this way round, NaN is refused too
      Raise(L": Parameters and moments must be between -1e300 and 1e300, obtained: " +
            Format(value));
}

void RV::RequireSpread(double mean, double sd) const {
  if (!(sd >= math::kEps)) Raise(L": Standard deviation must be strictly positive.");
  if (std::abs(mean) * kMinCoefficientOfVariation > sd)
    Raise(L": Coefficient of variation must be larger than 1e-6.");
}

double RV::RaiseToFloor(double mean, double sd) {
  const double floor = std::max(math::kEps, std::abs(mean) * kMinCoefficientOfVariation);
  return sd >= floor ? sd : floor;  // NaN, the difference of two overflows, as well
}

void RV::RequireSizes(Eigen::Index parameters, Eigen::Index moments) const {
  if (RV_Parameter.size() != parameters || RV_Statistical_Moments.size() != moments)
    Raise(L": The stored variable has " + std::to_wstring(RV_Parameter.size()) +
          L" parameters and " + std::to_wstring(RV_Statistical_Moments.size()) +
          L" moments, expected: " + std::to_wstring(parameters) + L" and " +
          std::to_wstring(moments));
}

void RV::Store(const Eigen::VectorXd& parameters, const Eigen::VectorXd& moments) {
  RequireMagnitude(parameters);
  RequireMagnitude(moments);
  RV_Parameter = parameters;
  RV_Statistical_Moments = moments;
}

void RV::Store(std::initializer_list<double> parameters, std::initializer_list<double> moments) {
  const auto vector = [](std::initializer_list<double> values) {
    return Eigen::Map<const Eigen::VectorXd>(values.begin(),
                                             static_cast<Eigen::Index>(values.size()));
  };
  Store(vector(parameters), vector(moments));
}

bool RV::IsReached(const Eigen::VectorXd& asked, const Eigen::VectorXd& found) const {
  constexpr double kTolerance = 1e-6;
  bool reached = true;
  std::wstring texts[2];
  for (Eigen::Index i = 0; i < asked.size(); ++i) {
    // Mean and standard deviation in terms of the latter; skewness and kurtosis have no unit.
    const double unit = i < 2 ? asked(1) : 1.0 + std::abs(asked(i));
    reached = reached && std::abs(found(i) - asked(i)) <= kTolerance * unit;
    texts[0] += (i > 0 ? L", " : L"") + Format(asked(i));
    texts[1] += (i > 0 ? L", " : L"") + Format(found(i));
  }
  if (!reached)
    utils::log::GetSharedStreamLog()->Write(
        utils::log::kWarning,
        L"RV '" + name_ + L"' of type '" + GetTypeName() + L"': The moments (" + texts[0] +
            L") are not reached; those of the variable are (" + texts[1] + L").");
  return reached;
}

template <class Archive>
void RV::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(RV_Parameter);
  ar& BOOST_SERIALIZATION_NVP(RV_Statistical_Moments);
  ar& BOOST_SERIALIZATION_NVP(RV_internal_parameter_map);
  ar& BOOST_SERIALIZATION_NVP(RV_internal_moments_map);
}

std::wstring RV::Format(double number) {
  utils::WideTextStream stream;
  stream << number;
  return stream.str();
}

}  // namespace algorithm
}  // namespace corvath

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::RV)
