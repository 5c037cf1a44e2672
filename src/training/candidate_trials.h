#pragma once

#include "metamodel/subspace_results.h"
#include "metamodel/surrogate.h"
#include "metamodel/types.h"
#include "training/candidate.h"
#include "training/cross_validation.h"
#include "training/soundness.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvath::training {

/// Called before each candidate and now and then inside long ones: its text, and the share of the
/// work that is done. Ends the work by an exception.
using CompetitionObserver = std::function<void(const std::wstring& candidate, double share)>;

/// A model that was fitted. Of the model its settings are kept, from which it is built again.
struct Candidate {
  CandidateForm form;
  math::metamodel::BitVector subspace;
  math::metamodel::SubspaceResults results;

  std::uint64_t GetNumberInputs() const { return math::metamodel::CountBits(subspace); }
};

/// Fits candidates to the data of one response, one after the other.
///
/// Regressions cost little, and all subspaces get them. What local models and kriging cost grows
/// with the square and the cube of the number of designs. Each of these families has a budget, which
/// ends at some 1000 designs to suffice for all subspaces: then those come first over which the
/// regressions do best, and at least two of them are tried. Beyond kMostLocal and kMostKriging
/// designs, which take half a gigabyte, the families are left out.
class CandidateTrials {
 public:
  static constexpr Eigen::Index kMostLocal = 5000;
  static constexpr Eigen::Index kMostKriging = 3000;

  /// Refers to its arguments, the forms excepted.
  CandidateTrials(const ResponseData& data, const math::metamodel::ZELSettings& settings,
                  std::vector<CandidateForm> forms, const CompetitionObserver& observer)
      : data_(data),
        settings_(settings),
        observer_(observer),
        forms_(std::move(forms)),
        probes_(data.points) {}

  /// Fits each form over each subspace. A form that a subspace or the designs do not suffice for is
  /// passed over; so is one that fails, and a transform that turns out to be none.
  /// @param begin, width  of this work in the share that the observer sees
  void Try(const std::vector<math::metamodel::BitVector>& subspaces, double begin, double width);
  bool WasTried(const math::metamodel::BitVector& subspace) const;

  const std::vector<Candidate>& GetCandidates() const { return candidates_; }
  /// By the coefficient of prognosis, adjusted if the settings say so.
  double GetScore(const Candidate& candidate) const {
    return settings_.use_adj_cop_ ? candidate.results.CoPadj : candidate.results.CoP;
  }
  /// The model of a candidate, built.
  boost::shared_ptr<math::metamodel::SurrogateBase> Build(const Candidate& candidate) const;
  const ProbePoints& GetProbes() const { return probes_; }
  /// Calls the observer for work between candidates.
  void Observe(const std::wstring& text) {
    text_ = text;
    Observe();
  }

 private:
  /// A candidate to be.
  struct Trial {
    CandidateForm form;
    math::metamodel::BitVector subspace;
    boost::shared_ptr<math::metamodel::SurrogateSettingsBase> settings;
    double cost;  ///< in floating-point operations, roughly
  };

  void Observe();
  std::vector<Trial> Plan(Family family,
                          const std::vector<math::metamodel::BitVector>& subspaces) const;
  std::vector<math::metamodel::BitVector> MostPromisingFirst(
      const std::vector<math::metamodel::BitVector>& subspaces) const;
  void Fit(const Trial& trial);
  bool IsNeutral(const math::metamodel::BitVector& subspace,
                 const math::metamodel::SurrogateBase& model);

  const ResponseData& data_;
  const math::metamodel::ZELSettings& settings_;
  const CompetitionObserver& observer_;
  std::vector<CandidateForm> forms_;
  ProbePoints probes_;
  std::vector<Candidate> candidates_;
  std::vector<math::metamodel::BitVector> tried_;
  std::map<math::metamodel::BitVector, bool> is_neutral_;
  std::map<Family, double> spent_;
  std::wstring text_;
  double share_ = 0.0;
  bool is_ended_ = false;  ///< the observer threw
};

}  // namespace corvath::training
