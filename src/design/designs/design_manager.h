#pragma once

#include "archive/serialization.h"
#include "design/designs/design.h"

#include <Eigen/Core>
#include <boost/unordered_map.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Position of each design id in a container.
using DesignIdToIndexLookup = boost::unordered_map<DesignId, std::size_t>;

/// Name of a response and its width in a table of numbers: 0 for a scalar, which makes one column
/// under its name; n > 0 for n elements, which make n columns "name[0]" to "name[n-1]"; -1 for what
/// makes no column.
using ResponseWidth = std::pair<std::wstring, std::int64_t>;
using ResponseWidths = std::vector<ResponseWidth>;

/// The designs of a project in the order of insertion, addressed by their ids.
///
/// Look-ups by id take constant time; the table behind them and what is derived from the designs
/// are built on first demand and kept until the designs change. Threads may read one container at
/// the same time, while none changes it.
///
/// When an id occurs twice, look-ups give the last design with it.
class DesignManager {
 public:
  /// Counters of the runs behind the designs, as those who run them keep them.
  class Stats {
   public:
    Stats() = default;
    Stats(const Stats& other) { *this = other; }
    Stats& operator=(const Stats& other);
    bool operator==(const Stats& other) const;

    std::atomic<std::uint64_t> total_{0};
    std::atomic<std::uint64_t> succeeded_{0};
    std::atomic<std::uint64_t> failed_{0};
    std::atomic<std::uint64_t> pending_{0};

   private:
    friend class boost::serialization::access;
    template <class Archive>
    void save(Archive& ar, unsigned int version) const;
    template <class Archive>
    void load(Archive& ar, unsigned int version);
    ZEL_SPLIT_SERIALIZE()
  };

  DesignManager() = default;
  explicit DesignManager(std::vector<Design> designs) : designs_(std::move(designs)) {}
  /// A copy builds its own tables.
  DesignManager(const DesignManager& other) : designs_(other.designs_), stats_(other.stats_) {}
  DesignManager(DesignManager&& other) noexcept;
  DesignManager& operator=(const DesignManager& other);
  DesignManager& operator=(DesignManager&& other) noexcept;

  std::size_t size() const { return designs_.size(); }
  bool empty() const { return designs_.empty(); }
  const Design& operator[](std::size_t position) const { return designs_[position]; }
  const std::vector<Design>& GetDesigns() const { return designs_; }
  /// For changes in place. Drops all tables; what is changed after the next look-up is not seen by
  /// them.
  std::vector<Design>& ModifyDesigns();
  const Stats& GetStats() const { return stats_; }
  Stats& GetStats() { return stats_; }

  /// Appends the design.
  void Add(Design design);
  /// Replaces the design of the same id or, with `by_leaf`, the first one whose deepest level is
  /// the same, which keeps its id. Without such a design the new one is appended.
  void AddOrReplace(Design design, bool by_leaf = false);
  void Clear();

  /// The design of that id or, with `by_leaf`, the first one whose deepest level is that of `id`;
  /// null if there is none. By leaf it walks the designs. Valid until the designs change.
  const Design* Find(const DesignId& id, bool by_leaf = false) const;
  /// @throws utils::runtime_error  there is no such design
  const Design& GetDesign(const DesignId& id) const;
  /// Copies of the designs in the order of `ids`; an id without a design is passed over.
  std::vector<Design> GetDesigns(const std::vector<DesignId>& ids) const;
  /// The same without copies; valid until the designs change.
  std::vector<const Design*> FindDesigns(const std::vector<DesignId>& ids) const;

  /// One design that has every name that occurs in a design of this container, in the order of
  /// first occurrence: each parameter with the value last seen, each response and criterion with
  /// the first that holds a value. With `check` the designs must agree about the types of responses
  /// and criteria; a design without a value is no disagreement.
  /// @throws std::logic_error  they do not agree
  Design BuildTemplate(bool check) const;
  /// Criteria of the template, unchecked.
  CriterionSequence GetCriteriaTemplate() const;
  /// Names of the template's criteria that are limits (types 6 and 7).
  /// @throws std::domain_error  the container is empty
  std::vector<std::wstring> GetLimitStateNames() const;

  /// Width of each response, in template order. Where designs differ in the number of elements, the
  /// larger counts with `keep_largest`, otherwise the name leaves the list. Width -1: no design has
  /// numbers for it, or the last one with a value has a signal.
  ResponseWidths GetResponseWidths(bool keep_largest) const;
  /// Widths of the responses that metamodels can stand for, one model per element: scalars and
  /// vectors, the largest width of each. Matrices, signals and what has no number are left out.
  ResponseWidths GetModelResponseWidths() const;
  /// Names of the columns that `widths` makes.
  static std::vector<std::wstring> GetResponseNames(const ResponseWidths& widths);
  /// Responses as numbers, one row per design and one column per name of GetResponseNames(widths).
  /// Matrices stand row by row; of complex numbers the real part counts. NaN where a design has no
  /// number; elements beyond the width are left out.
  Eigen::MatrixXd GetResponseMatrix(const ResponseWidths& widths) const;

  /// For each wanted design the id of the first design here (the last with `reverse`) with the same
  /// parameters; parameters named in `ignored_names` do not count, numbers may differ by the
  /// relative tolerance 2.2e-14. The default id where there is none. Of n designs here and w wanted
  /// with p parameters it takes O((n + w) p log(n + w)) unless many designs nearly coincide.
  /// @throws std::domain_error  no designs here or none wanted; the numbers of parameters differ
  std::vector<DesignId> ExtractDesignNumbers(const std::vector<Design>& wanted, bool reverse,
                                             const std::set<std::wstring>& ignored_names) const;

  /// The designs and the counters.
  bool operator==(const DesignManager& other) const;
  bool operator!=(const DesignManager& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  std::shared_ptr<DesignIdToIndexLookup> GetLookup() const;
  std::shared_ptr<const Design> GetTemplate() const;
  void DropCaches() { template_.reset(); }
  void DropTables() {
    lookup_.reset();
    DropCaches();
  }

  std::vector<Design> designs_;
  Stats stats_;
  // Built on first demand, possibly by several readers at once: read and set atomically. A reader
  // holds its own reference.
  mutable std::shared_ptr<DesignIdToIndexLookup> lookup_;
  mutable std::shared_ptr<const Design> template_;  ///< BuildTemplate(false)
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::DesignManager, 2)
