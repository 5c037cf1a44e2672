#pragma once

#include "archive/serialization.h"
#include "foundation/log.h"
#include "project/models/surrogate_info.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace corvath::algorithm::datatypes {

class DesignManager;
class ParameterManager;

/// The models of a project by response, in the order of the file.
///
/// A look-up hashes the name and does not depend on the number of models. The records are therefore
/// changed through the container alone (AddOrReplace, Update); the models, which are shared, may be
/// built through a constant record. Constant operations may run concurrently.
class SurrogateInfoContainer {
 public:
  using SurrogateInfos = std::list<SurrogateInfo>;
  using LogPointer = boost::shared_ptr<utils::LogBase>;

  SurrogateInfoContainer() = default;
  /// A copy shares the models; see Clone().
  SurrogateInfoContainer(const SurrogateInfoContainer& other);
  SurrogateInfoContainer(SurrogateInfoContainer&& other) noexcept;
  SurrogateInfoContainer& operator=(const SurrogateInfoContainer& other);
  SurrogateInfoContainer& operator=(SurrogateInfoContainer&& other) noexcept;
  ~SurrogateInfoContainer() = default;

  /// A container with models of its own. Records that share a model share its copy.
  SurrogateInfoContainer Clone() const;

  const SurrogateInfos& GetSurrogateInfos() const { return infos_; }
  bool IsEmpty() const { return infos_.empty(); }

  /// Whether some record has this name and index or, for index 0, this full name.
  bool HasSurrogateInfo(const std::wstring& name, std::uint64_t index = 0) const;

  /// The first record of this name and index or, for index 0, of this full name.
  /// @throws corvath::utils::runtime_error `Surrogate info with name "<name>" does not exist.`
  const SurrogateInfo& GetSurrogateInfo(const std::wstring& name, std::uint64_t index) const;

  /// As above for a text such as "name" or "name[2]"; an index that is no number counts as 0.
  const SurrogateInfo& GetSurrogateInfo(const std::wstring& full_name) const;

  /// Assigns over the record of the same name and index, or adds one at the end.
  void AddOrReplace(SurrogateInfo info);

  /// Calls `change` with each record in order.
  void Update(const std::function<void(SurrogateInfo&)>& change);

  /// Builds the models, or with `names` (response names or full names) those of these responses.
  /// Returns whether all of them were built; a record without a model counts as not built.
  /// With a `logger` a model that throws is named there and counts as not built; without one the
  /// exception passes.
  bool BuildAll(const std::set<std::wstring>& names = {}, const LogPointer& logger = {}) const;

  /// Builds the models and their errors, with the cross-validation groups from `subsets` by full
  /// name or response name, without groups where there are none. Results as for BuildAll.
  bool BuildErrorsAll(const std::map<std::wstring, std::vector<std::uint64_t>>& subsets = {},
                      const LogPointer& logger = {}) const;

  /// Asks each model in order whether it is available and stops at the first that is not. A model
  /// that throws is not; the log says "Availability check failed: " and the text.
  bool CheckAvailable(const LogPointer& logger) const;

  /// Gives every model the logger.
  void SetLogger(const LogPointer& logger) const;

  /// Empties the support points and values of the models, since the designs hold them. A model
  /// whose designs are not known keeps them, with a warning in the shared log.
  void ResetSupportData();

  /// Takes the support points and values of the models back from the designs that they used: the
  /// parameters' own values when `plain`, otherwise the designs mapped through the parameters'
  /// random variable set. A model whose designs are not known is passed over with a warning in the
  /// shared log; so is one whose designs cannot be converted, with an error that names it.
  void RestoreSupportData(const DesignManager& designs, const ParameterManager& parameters,
                          bool plain);

  friend bool operator==(const SurrogateInfoContainer& a, const SurrogateInfoContainer& b) {
    return a.infos_ == b.infos_;
  }
  friend bool operator!=(const SurrogateInfoContainer& a, const SurrogateInfoContainer& b) {
    return !(a == b);
  }

 private:
  friend class boost::serialization::access;
  ZEL_SPLIT_SERIALIZE()
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);

  void Index(SurrogateInfo& info);
  void Reindex();
  SurrogateInfo* Find(const std::wstring& name, std::uint64_t index) const;

  SurrogateInfos infos_;
  // The first record of each name and index, and of each full name. The records' addresses are
  // stable: they are list nodes.
  std::unordered_map<std::wstring, std::unordered_map<std::uint64_t, SurrogateInfo*>> by_name_;
  std::unordered_map<std::wstring, SurrogateInfo*> by_full_name_;
};

}  // namespace corvath::algorithm::datatypes
