#pragma once

#include "training/finalist.h"

#include <cstddef>
#include <map>
#include <set>
#include <vector>

namespace corvath::training {

/// One competition for one response, from the subspaces to the best of each form.
///
/// Each form (candidate.h) is fitted over each subspace that the filters propose
/// (subspace_filters.h), and then over those around the subspaces of the leaders. The measure is the
/// coefficient of prognosis in the same groups for all. A model that has no prediction between the
/// designs (soundness.h) is not the best of its form.
class Competition {
 public:
  /// Refers to its arguments, the forms excepted.
  Competition(const ResponseData& data, const TrainSettings& settings,
              std::vector<CandidateForm> forms, double budget, const CompetitionObserver& observer);

  /// The best sound candidate of each form, the constant first; of those with much the same errors as
  /// the one of the highest score, the one of the fewest inputs. Then, of the forms that shrink what
  /// the data do not support, that over all inputs. Valid as long as the competition. Without a
  /// sound candidate at all soundness does not count.
  /// @throws TrainingError  no candidate can be built
  Finalists Run();
  CandidateTrials& GetTrials() { return trials_; }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  const Candidate& At(std::size_t position) const { return trials_.GetCandidates()[position]; }
  double ScoreOf(const Candidate& candidate) const { return trials_.GetScore(candidate); }
  bool IsSoundAt(std::size_t position);
  std::size_t BestOf(const CandidateForm& form, bool needs_sound);
  std::size_t WholeOf(const CandidateForm& form, bool needs_sound);
  template <class Admits, class Rank>
  std::size_t First(const Admits& admits, const Rank& rank, bool needs_sound);
  std::vector<math::metamodel::BitVector> ProposeByLeaders();
  std::vector<math::metamodel::BitVector> Without(
      const Candidate& leader, const math::metamodel::SurrogateBase& model) const;
  std::vector<math::metamodel::BitVector> With(const Candidate& leader) const;

  const ResponseData& data_;
  const TrainSettings& settings_;
  std::vector<CandidateForm> forms_;  ///< the constant first
  CandidateTrials trials_;
  std::map<std::size_t, bool> is_sound_;  ///< of the candidates for which it was asked
  std::set<std::size_t> heard_;           ///< leaders that made their proposals
};

}  // namespace corvath::training
