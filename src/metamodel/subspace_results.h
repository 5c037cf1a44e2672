#pragma once

#include "archive/serialization.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <list>
#include <string>
#include <utility>

namespace corvath::math::metamodel {

class SurrogateSettingsBase;

/// Families of models as they are stored. A file may name one that only its writer knows.
struct ModelType {
  enum eModelType : std::int32_t {};
};

/// One candidate that a training tried, with its quality figures (CoD and CoP, adjusted for the number
/// of coefficients, of test data; root mean square error of prediction). The members carry the names
/// of their keys.
struct SubspaceResults {
  ModelType::eModelType model_type{};
  boost::shared_ptr<SurrogateSettingsBase> settings;  ///< may be null; never shared after loading
  double CoD = 0.0;
  double CoDadj = 0.0;
  double CoP = 0.0;
  double CoPadj = 0.0;
  double CoDtest = 0.0;
  double predError = 0.0;
  Eigen::VectorXd singleCoPs;

  SubspaceResults() = default;
  /// Copies share no settings: each owns a clone.
  SubspaceResults(const SubspaceResults& other);
  SubspaceResults(SubspaceResults&&) = default;
  SubspaceResults& operator=(const SubspaceResults& other);
  SubspaceResults& operator=(SubspaceResults&&) = default;

  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  /// A file may share one settings object between several candidates; each gets its own.
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()
};

/// Same figures and equal settings; two NaNs are equal.
bool operator==(const SubspaceResults& a, const SubspaceResults& b);
inline bool operator!=(const SubspaceResults& a, const SubspaceResults& b) {
  return !(a == b);
}

/// Candidates by the name that the model selection gave them, in the order of the file.
class SubspaceResultContainer {
 public:
  using Container = std::list<std::pair<std::wstring, SubspaceResults>>;

  const Container& GetResults() const { return container_; }
  void Add(std::wstring name, SubspaceResults results) {
    container_.emplace_back(std::move(name), std::move(results));
  }

  friend bool operator==(const SubspaceResultContainer& a, const SubspaceResultContainer& b) {
    return a.container_ == b.container_;
  }
  friend bool operator!=(const SubspaceResultContainer& a, const SubspaceResultContainer& b) {
    return !(a == b);
  }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  Container container_;
};

}  // namespace corvath::math::metamodel

ZEL_EXPORT_KEY(corvath::math::metamodel::SubspaceResults,
               "corvath::math::metamodel::SubspaceResults")
ZEL_EXPORT_KEY(corvath::math::metamodel::SubspaceResultContainer,
               "corvath::math::metamodel::SubspaceResultContainer")
