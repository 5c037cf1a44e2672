#pragma once

#include "archive/serialization.h"

#include <Eigen/Core>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

/// All distributions: class, name, and the id that projects store. A new one stands in this list and
/// in two files of distributions/.
#define ZEL_DISTRIBUTIONS(X)                \
  X(RV_Uniform, UNIFORM, 3)                 \
  X(RV_Normal, NORMAL, 4)                   \
  X(RV_Truncatednormal, TRUNCATEDNORMAL, 5) \
  X(RV_Lognormal, LOGNORMAL, 6)             \
  X(RV_Exponential, EXPONENTIAL, 7)         \
  X(RV_Triangular, TRIANGULAR, 15)          \
  X(RV_Polymap, POLYMAP, 38)                \
  X(RV_Kernel, KERNEL, 39)                  \
  X(RV_Gumbel, GUMBEL, 30)                  \
  X(RV_Weibull, WEIBULL, 22)                \
  X(RV_Frechet, FRECHET, 36)                \
  X(RV_Bernoulli, BERNOULLI, 40)            \
  X(RV_Beta, BETA, 16)                      \
  X(RV_Loguniform, LOGUNIFORM, 41)          \
  X(RV_GeneralDiscrete, DISCRETE, 42)       \
  X(RV_MultiUniform, MULTIUNIFORM, 43)      \
  X(RV_Lambda, LAMBDA, 44)                  \
  X(RV_Poisson, POISSON, 45)

namespace corvath::enums::RandomVariable {

enum eType : int {
#define ZEL_ENUMERATOR(Class, name, id) name = id,
  ZEL_DISTRIBUTIONS(ZEL_ENUMERATOR)
#undef ZEL_ENUMERATOR
};

/// "UNIFORM" for 3 and so on.
/// @throws corvath::utils::runtime_error  an id that is not in the list
const std::wstring& ToText(int type);

/// The id of a text such as "UNIFORM".
/// @throws corvath::utils::runtime_error  an unknown text
eType FromText(const std::wstring& text);

}  // namespace corvath::enums::RandomVariable

namespace corvath::algorithm {

/// A random variable of one dimension, defined by its distribution parameters or by its statistical
/// moments (mean, standard deviation, ...); setting one recalculates the other.
///
///  - SetParameters takes any finite values: one outside its domain is moved to the nearest allowed
///    value, and a spread that is too small for the moments to be told from a constant (standard
///    deviation 2^-52, coefficient of variation 1e-6, unless a type says otherwise) is raised.
///    The tabulated types and the kernel density refuse tables that mean nothing.
///  - SetStats refuses moments outside the domain.
///  - Both refuse a wrong number of elements, and numbers that are not between -1e300 and 1e300 (NaN
///    among them), given or calculated, so that no quantile overflows. What is refused leaves the
///    object as it was. A refusal is a corvath::utils::runtime_error whose text names variable and
///    type.
///  - Where a search for the parameters does not return to the moments asked for, the moments are
///    those of the parameters found, and the shared log says so.
///
/// Functions of x and p let NaN pass. Const operations may run in several threads, except GetStat
/// and GetParameter, which build the table of names at their first call.
class RV {
 public:
  virtual ~RV();
  /// Ends of the support; infinite where there is none.
  virtual double GetLowerBound() const;
  virtual double GetUpperBound() const;
  /// Density at x; of a discrete variable a marker: NaN at a state, 0 elsewhere.
  virtual double PDF(double x) const = 0;
  /// Probability of a value at or below x.
  virtual double CDF(double x) const = 0;
  /// Probability of the single point x: 0 for a continuous variable.
  virtual double PMF(double x) const;
  /// The states of a discrete variable, one row of value and probability each; else empty.
  virtual Eigen::MatrixXd GetStates() const;
  /// Whether the variable is defined through parameters, or through samples.
  virtual bool IsParametric() const = 0;
  virtual bool IsNonParametric() const = 0;
  virtual bool HasLowerBound() const = 0;
  virtual bool HasUpperBound() const = 0;
  virtual bool IsDiscrete() const = 0;
  virtual boost::shared_ptr<RV> Clone() const = 0;
  virtual enums::RandomVariable::eType GetTypeId() const = 0;
  /// Names of the elements of GetStats() and GetParameters(), in their order.
  virtual std::vector<std::wstring> GetMomentNames() const = 0;
  virtual std::vector<std::wstring> GetParameterNames() const = 0;
  /// The smallest x with CDF(x) >= p. Where the support is unbounded, p is held in
  /// [1e-10, 1 - 1e-10].
  virtual double InverseCDF(double p) const = 0;
  virtual void SetParameters(const Eigen::VectorXd& parameters) = 0;
  virtual void SetStats(const Eigen::VectorXd& moments) = 0;
  /// Determines the variable from samples, one per row.
  /// @throws corvath::utils::runtime_error  the type cannot be fitted, or the data do not fit it
  virtual void Fit(const Eigen::MatrixXd& data);
  /// Back to the default of the type; the name stays.
  virtual void Reset() = 0;
  /// Same type, and parameters and moments equal up to a relative 2^-52; names do not count.
  virtual bool operator==(const RV& other) const;
  virtual std::wstring GetTypeName() const;

  bool operator!=(const RV& other) const { return !(*this == other); }

  /// Instance name, used in messages; "RV" unless set, and not stored in a project.
  const std::wstring& GetName() const { return name_; }
  void SetName(const std::wstring& name) { name_ = name; }

  const Eigen::VectorXd& GetParameters() const { return RV_Parameter; }
  const Eigen::VectorXd& GetStats() const { return RV_Statistical_Moments; }

  /// One parameter or moment by its name. Setting a value close to the present one does nothing;
  /// a refused one leaves the variable as it was.
  /// @throws corvath::utils::runtime_error  no such name, names that are not unique, or a refusal
  double GetParameter(const std::wstring& ident) const;
  void SetParameter(const std::wstring& ident, double value);
  double GetStat(const std::wstring& ident) const;
  void SetStat(const std::wstring& ident, double value);
  double GetMean() const { return GetStat(L"Mean value"); }

 protected:
  using IdentMap = std::map<std::wstring, std::uint64_t>;

  RV() = default;
  RV(const RV&) = default;
  RV& operator=(const RV&) = default;

  /// Raises "RV '<name>' of type '<type>'" followed by `text`.
  [[noreturn]] void Raise(const std::wstring& text) const;
  /// Checks shared by SetParameters and SetStats: `expected` elements, else `text` and the number
  /// obtained; then each of them within kMaxMagnitude.
  void RequireCount(const Eigen::VectorXd& values, Eigen::Index expected,
                    const std::wstring& text) const;
  void RequireMagnitude(const Eigen::VectorXd& values) const;
  /// Checks shared by SetStats: the standard deviation and the coefficient of variation.
  void RequireSpread(double mean, double sd) const;
  /// The spread that RequireSpread accepts next to `mean`: `sd`, or the smallest above it.
  static double RaiseToFloor(double mean, double sd);
  /// After loading: a file may hold anything, but evaluation relies on the sizes.
  void RequireSizes(Eigen::Index parameters, Eigen::Index moments) const;
  /// The only way to new parameters and moments: refuses them beyond kMaxMagnitude, before anything
  /// changes.
  void Store(const Eigen::VectorXd& parameters, const Eigen::VectorXd& moments);
  void Store(std::initializer_list<double> parameters, std::initializer_list<double> moments);
  /// After a search: whether `found` are the moments asked for; if not, the shared log says so.
  bool IsReached(const Eigen::VectorXd& asked, const Eigen::VectorXd& found) const;
  /// A number as all messages show it: six significant digits.
  static std::wstring Format(double number);

  static constexpr double kMaxMagnitude = 1e300;

  // The keys of the persisted form are the members' names.
  Eigen::VectorXd RV_Parameter;            ///< in the order of GetParameterNames()
  Eigen::VectorXd RV_Statistical_Moments;  ///< in the order of GetMomentNames()

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  Eigen::Index Position(IdentMap& map, const std::vector<std::wstring>& names,
                        const std::wstring& ident, Eigen::Index size) const;

  std::wstring name_ = L"RV";
  // Position by name, built when first needed.
  mutable IdentMap RV_internal_parameter_map;
  mutable IdentMap RV_internal_moments_map;
};

/// Bounds of a type's support, as the flags tell them.
enum class Support { kLine, kLowerBound, kInterval };

/// What every type says about itself in the same way, and its persisted form: that of RV, then what
/// the type adds in a SerializeFurther of its own. Bodies in distributions/persisted_form.h.
template <class Derived, enums::RandomVariable::eType kId, Support kSupport, bool kDiscrete = false>
class RVType : public RV {
 public:
  bool IsParametric() const override { return kId != enums::RandomVariable::KERNEL; }
  bool IsNonParametric() const override { return kId == enums::RandomVariable::KERNEL; }
  bool HasLowerBound() const override { return kSupport != Support::kLine; }
  bool HasUpperBound() const override { return kSupport == Support::kInterval; }
  bool IsDiscrete() const override { return kDiscrete; }
  boost::shared_ptr<RV> Clone() const override {
    return boost::make_shared<Derived>(static_cast<const Derived&>(*this));
  }
  enums::RandomVariable::eType GetTypeId() const override { return kId; }
  std::vector<std::wstring> GetMomentNames() const override {
    return {L"Mean value", L"Standard deviation"};
  }

 protected:
  template <class Archive>
  void SerializeFurther(Archive&) {}
  /// How many parameters a variable of this type has; of one that takes any number of them, as many
  /// as it needs to make use of those that it has.
  Eigen::Index NumParameters() const {
    return static_cast<Eigen::Index>(this->GetParameterNames().size());
  }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

#define ZEL_DECLARE(Class, name, id) class Class;
ZEL_DISTRIBUTIONS(ZEL_DECLARE)
#undef ZEL_DECLARE

}  // namespace corvath::algorithm

#define ZEL_DISTRIBUTION_KEY(Class, name, id) \
  ZEL_EXPORT_KEY(corvath::algorithm::Class, "corvath::algorithm::" #Class)
ZEL_DISTRIBUTIONS(ZEL_DISTRIBUTION_KEY)
#undef ZEL_DISTRIBUTION_KEY
