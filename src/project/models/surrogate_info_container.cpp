#include "project/models/surrogate_info_container.h"

#include "archive/instantiate.h"
#include "design/indexed_name.h"
#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "metamodel/surrogate.h"

#include <exception>
#include <new>
#include <utility>

namespace corvath::algorithm::datatypes {

namespace {

using math::metamodel::SurrogateBase;

/// `build` on the model of `info`, false without a model. With a logger an exception costs this
/// model alone.
template <class Build>
bool Guarded(const SurrogateInfo& info, const SurrogateInfoContainer::LogPointer& logger,
             const Build& build) {
  if (!info.GetSurrogate()) return false;
  if (!logger) return build(*info.GetSurrogate());
  try {
    return build(*info.GetSurrogate());
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the model
  } catch (const std::exception& error) {
    utils::log::LogLine(logger, utils::log::kWarning)
        << L"The model of response \"" << info.GetFullName() << L"\" fails: " << error.what();
    return false;
  }
}

}  // namespace

SurrogateInfoContainer::SurrogateInfoContainer(const SurrogateInfoContainer& other)
    : infos_(other.infos_) {
  Reindex();
}

SurrogateInfoContainer::SurrogateInfoContainer(SurrogateInfoContainer&& other) noexcept {
  *this = std::move(other);
}

SurrogateInfoContainer& SurrogateInfoContainer::operator=(const SurrogateInfoContainer& other) {
  if (this != &other) *this = SurrogateInfoContainer(other);
  return *this;
}

SurrogateInfoContainer& SurrogateInfoContainer::operator=(SurrogateInfoContainer&& other) noexcept {
  // List nodes keep their addresses when two lists swap, so that the index moves along.
  infos_.swap(other.infos_);
  by_name_.swap(other.by_name_);
  by_full_name_.swap(other.by_full_name_);
  return *this;
}

SurrogateInfoContainer SurrogateInfoContainer::Clone() const {
  SurrogateInfoContainer copy(*this);
  std::map<const SurrogateBase*, SurrogateInfo::SurrogatePointer> clones;
  for (SurrogateInfo& info : copy.infos_) {
    if (!info.GetSurrogate()) continue;
    SurrogateInfo::SurrogatePointer& clone = clones[info.GetSurrogate().get()];
    if (!clone) clone.reset(info.GetSurrogate()->Clone());
    info.SetSurrogate(clone);
  }
  return copy;
}

void SurrogateInfoContainer::Index(SurrogateInfo& info) {
  by_name_[info.GetResponseName()].emplace(info.GetResponseIndex(), &info);
  by_full_name_.emplace(info.GetFullName(), &info);
}

void SurrogateInfoContainer::Reindex() {
  by_name_.clear();
  by_full_name_.clear();
  for (SurrogateInfo& info : infos_) Index(info);
}

SurrogateInfo* SurrogateInfoContainer::Find(const std::wstring& name, std::uint64_t index) const {
  const auto elements = by_name_.find(name);
  if (elements != by_name_.end()) {
    const auto info = elements->second.find(index);
    if (info != elements->second.end()) return info->second;
  }
  if (index != 0) return nullptr;
  const auto info = by_full_name_.find(name);
  return info == by_full_name_.end() ? nullptr : info->second;
}

bool SurrogateInfoContainer::HasSurrogateInfo(const std::wstring& name, std::uint64_t index) const {
  return Find(name, index) != nullptr;
}

const SurrogateInfo& SurrogateInfoContainer::GetSurrogateInfo(const std::wstring& name,
                                                              std::uint64_t index) const {
  const SurrogateInfo* info = Find(name, index);
  if (!info)
    throw utils::runtime_error(L"Surrogate info with name \"" + name + L"\" does not exist.");
  return *info;
}

const SurrogateInfo& SurrogateInfoContainer::GetSurrogateInfo(const std::wstring& full_name) const {
  const SplitName parts = SplitIndexedName(full_name);
  const std::int64_t number = parts.GetIndex().value_or(0);
  const auto index = static_cast<std::uint64_t>(number < 0 ? 0 : number);
  const SurrogateInfo* info = Find(parts.base, index);
  if (!info) info = Find(full_name, 0);  // the name of a scalar response may hold brackets
  return info ? *info : GetSurrogateInfo(parts.base, index);
}

void SurrogateInfoContainer::AddOrReplace(SurrogateInfo info) {
  const auto elements = by_name_.find(info.GetResponseName());
  if (elements != by_name_.end()) {
    const auto old = elements->second.find(info.GetResponseIndex());
    if (old != elements->second.end()) {
      *old->second = std::move(info);
      Reindex();  // its full name may have changed
      return;
    }
  }
  infos_.push_back(std::move(info));
  Index(infos_.back());
}

void SurrogateInfoContainer::Update(const std::function<void(SurrogateInfo&)>& change) {
  try {
    for (SurrogateInfo& info : infos_) change(info);
  } catch (...) {
    Reindex();
    throw;
  }
  Reindex();
}

bool SurrogateInfoContainer::BuildAll(const std::set<std::wstring>& names,
                                      const LogPointer& logger) const {
  bool all_built = true;
  for (const SurrogateInfo& info : infos_) {
    if (!names.empty() && names.count(info.GetResponseName()) == 0 &&
        names.count(info.GetFullName()) == 0)
      continue;
    if (!Guarded(info, logger, [](SurrogateBase& model) { return model.Build(); }))
      all_built = false;
  }
  return all_built;
}

bool SurrogateInfoContainer::BuildErrorsAll(
    const std::map<std::wstring, std::vector<std::uint64_t>>& subsets,
    const LogPointer& logger) const {
  const auto groups_of = [&](const SurrogateInfo& info) {
    auto found = subsets.find(info.GetFullName());
    if (found == subsets.end()) found = subsets.find(info.GetResponseName());
    return found;
  };
  bool all_built = true;
  for (const SurrogateInfo& info : infos_) {
    const bool built = Guarded(info, logger, [&](SurrogateBase& model) {
      if (!model.Build()) return false;
      const auto groups = groups_of(info);
      if (groups == subsets.end() || groups->second.empty()) return model.BuildErrors();
      return model.BuildErrors(Eigen::Map<const math::metamodel::IndexVector>(
          groups->second.data(), static_cast<Eigen::Index>(groups->second.size())));
    });
    if (!built) all_built = false;
  }
  return all_built;
}

bool SurrogateInfoContainer::CheckAvailable(const LogPointer& logger) const {
  for (const SurrogateInfo& info : infos_) {
    if (!info.GetSurrogate()) continue;
    try {
      if (!info.GetSurrogate()->CheckAvailable(logger)) return false;
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      utils::log::LogLine(logger, utils::log::kError)
          << L"Availability check failed: " << error.what();
      return false;
    }
  }
  return true;
}

void SurrogateInfoContainer::SetLogger(const LogPointer& logger) const {
  for (const SurrogateInfo& info : infos_)
    if (info.GetSurrogate()) info.GetSurrogate()->SetLogger(logger);
}

template <class Archive>
void SurrogateInfoContainer::save(Archive& ar, unsigned int /*version*/) const {
  ar& BOOST_SERIALIZATION_NVP(infos_);
}

template <class Archive>
void SurrogateInfoContainer::load(Archive& ar, unsigned int /*version*/) {
  by_name_.clear();  // no index into records that a failed reading replaced
  by_full_name_.clear();
  ar& BOOST_SERIALIZATION_NVP(infos_);
  Reindex();
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::SurrogateInfoContainer)
