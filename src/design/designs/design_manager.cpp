#include "design/designs/design_manager.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <utility>

namespace corvath::algorithm::datatypes {

DesignManager::Stats& DesignManager::Stats::operator=(const Stats& other) {
  total_ = other.total_.load();
  succeeded_ = other.succeeded_.load();
  failed_ = other.failed_.load();
  pending_ = other.pending_.load();
  return *this;
}

bool DesignManager::Stats::operator==(const Stats& other) const {
  return total_ == other.total_ && succeeded_ == other.succeeded_ && failed_ == other.failed_ &&
         pending_ == other.pending_;
}

template <class Archive>
void DesignManager::Stats::save(Archive& ar, const unsigned int) const {
  const auto save_counter = [&ar](const char* name, const std::atomic<std::uint64_t>& counter) {
    const std::uint64_t number = counter;
    ar << boost::serialization::make_nvp(name, number);
  };
  save_counter("total_", total_);
  save_counter("succeeded_", succeeded_);
  save_counter("failed_", failed_);
  save_counter("pending_", pending_);
}

template <class Archive>
void DesignManager::Stats::load(Archive& ar, const unsigned int) {
  const auto load_counter = [&ar](const char* name, std::atomic<std::uint64_t>& counter) {
    std::uint64_t number = 0;
    ar >> boost::serialization::make_nvp(name, number);
    counter = number;
  };
  load_counter("total_", total_);
  load_counter("succeeded_", succeeded_);
  load_counter("failed_", failed_);
  load_counter("pending_", pending_);
}

DesignManager::DesignManager(DesignManager&& other) noexcept
    : designs_(std::move(other.designs_)), stats_(other.stats_) {
  other.Clear();
}

DesignManager& DesignManager::operator=(const DesignManager& other) {
  if (this != &other) *this = DesignManager(other);
  return *this;
}

DesignManager& DesignManager::operator=(DesignManager&& other) noexcept {
  if (this != &other) {
    designs_ = std::move(other.designs_);
    stats_ = other.stats_;
    DropTables();
    other.Clear();
  }
  return *this;
}

std::vector<Design>& DesignManager::ModifyDesigns() {
  DropTables();
  return designs_;
}

void DesignManager::Clear() {
  designs_.clear();
  DropTables();
}

std::shared_ptr<DesignIdToIndexLookup> DesignManager::GetLookup() const {
  std::shared_ptr<DesignIdToIndexLookup> lookup = std::atomic_load(&lookup_);
  if (!lookup) {
    lookup = std::make_shared<DesignIdToIndexLookup>();
    lookup->reserve(designs_.size());
    for (std::size_t i = 0; i < designs_.size(); ++i) (*lookup)[designs_[i].GetId()] = i;
    std::atomic_store(&lookup_, lookup);
  }
  return lookup;
}

void DesignManager::Add(Design design) {
  DropCaches();
  // Put back when all went well; a table that somebody else still reads is not touched.
  const std::shared_ptr<DesignIdToIndexLookup> lookup = std::move(lookup_);
  lookup_ = nullptr;
  designs_.push_back(std::move(design));
  if (!lookup || lookup.use_count() > 1) return;
  (*lookup)[designs_.back().GetId()] = designs_.size() - 1;
  lookup_ = lookup;
}

void DesignManager::AddOrReplace(Design design, bool by_leaf) {
  const Design* known = Find(design.GetId(), by_leaf);
  if (!known) return Add(std::move(design));
  DropCaches();
  if (by_leaf) design.SetId(known->GetId());
  designs_[static_cast<std::size_t>(known - designs_.data())] = std::move(design);
}

const Design* DesignManager::Find(const DesignId& id, bool by_leaf) const {
  if (by_leaf) {
    const auto found = std::find_if(
        designs_.begin(), designs_.end(),
        [&leaf = id.Leaf()](const Design& design) { return design.GetId().Leaf() == leaf; });
    return found == designs_.end() ? nullptr : &*found;
  }
  const auto lookup = GetLookup();
  const auto found = lookup->find(id);
  return found == lookup->end() ? nullptr : &designs_[found->second];
}

const Design& DesignManager::GetDesign(const DesignId& id) const {
  const Design* design = Find(id);
  if (!design) throw utils::runtime_error(L"No such design");
  return *design;
}

std::vector<const Design*> DesignManager::FindDesigns(const std::vector<DesignId>& ids) const {
  std::vector<const Design*> found;
  found.reserve(ids.size());
  for (const DesignId& id : ids)
    if (const Design* design = Find(id)) found.push_back(design);
  return found;
}

std::vector<Design> DesignManager::GetDesigns(const std::vector<DesignId>& ids) const {
  const std::vector<const Design*> found = FindDesigns(ids);
  std::vector<Design> copies;
  copies.reserve(found.size());
  for (const Design* design : found) copies.push_back(*design);
  return copies;
}

bool DesignManager::operator==(const DesignManager& other) const {
  return designs_ == other.designs_ && stats_ == other.stats_;
}

template <class Archive>
void DesignManager::save(Archive& ar, const unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(designs_);
  ar << BOOST_SERIALIZATION_NVP(stats_);
}

template <class Archive>
void DesignManager::load(Archive& ar, const unsigned int version) {
  DropTables();
  if (version == 0) {
    std::list<Design> designs;
    ar >> boost::serialization::make_nvp("designs_", designs);
    designs_.assign(std::make_move_iterator(designs.begin()),
                    std::make_move_iterator(designs.end()));
  } else {
    ar >> BOOST_SERIALIZATION_NVP(designs_);
  }
  stats_ = Stats();
  if (version >= 2) ar >> BOOST_SERIALIZATION_NVP(stats_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::DesignManager::Stats)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::DesignManager)
