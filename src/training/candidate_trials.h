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
  math::metamodel::RidgePenalty penalty;
  Eigen::VectorXd predicted;  ///< n: each value without its group

  std::uint64_t GetNumberInputs() const { return math::metamodel::CountBits(subspace); }
};

/// Fits candidates to the data of one response, one after the other.
///
/// Regressions cost little, and all subspaces get them. The other families get the first subspace
/// that is proposed and those over which the regressions do best, as many as their share of the
/// budget suffices for. The budget is counted in operations, not in seconds: the same table gives
/// the same models on every machine.
class CandidateTrials {
 public:
  /// Refers to its arguments, the forms excepted.
  /// @param budget  operations; the first trial of a family is made whatever it costs
  CandidateTrials(const ResponseData& data, const TrainSettings& settings,
                  std::vector<CandidateForm> forms, double budget,
                  const CompetitionObserver& observer);

  /// Fits each form over each subspace. A form that a subspace or the designs do not suffice for is
  /// passed over; so is one that fails, and a transform that turns out to be none.
  /// The constant is tried first of all.
  /// @param begin, width  of this work in the share that the observer sees
  void Try(const std::vector<math::metamodel::BitVector>& subspaces, double begin, double width);
  /// Whether some form was tried over it, with or without success.
  bool WasTried(const math::metamodel::BitVector& subspace) const;

  const std::vector<Candidate>& GetCandidates() const { return candidates_; }
  /// By the coefficient of prognosis, adjusted if the settings say so.
  double GetScore(const Candidate& candidate) const {
    return settings_.adjusted_cop ? candidate.results.CoPadj : candidate.results.CoP;
  }
  /// A sentence on the families that the budget kept from some of the subspaces; may be empty.
  std::wstring GetLimits() const;
  /// The model of a candidate, built.
  boost::shared_ptr<math::metamodel::SurrogateBase> Build(const Candidate& candidate) const;
  /// Its single CoPs; from rows that stand for all where there are many.
  Eigen::VectorXd ComputeSingleCoPs(const Candidate& candidate,
                                    const math::metamodel::SurrogateBase& model) const;
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

  /// Forms that share a part of the budget.
  enum class Costs { kRegression, kRidge, kMovingLeastSquares, kIsotropic, kAnisotropic };
  static Costs CostsOf(const CandidateForm& form);
  static std::wstring NameOf(Costs family);

  void Observe();
  /// @param[out] is_limited  set when the budget ends it
  std::vector<Trial> Plan(Costs family, const std::vector<math::metamodel::BitVector>& subspaces,
                          bool& is_limited) const;
  std::vector<math::metamodel::BitVector> MostPromisingFirst(
      const std::vector<math::metamodel::BitVector>& subspaces) const;
  void Fit(const Trial& trial);
  bool IsNeutral(const Trial& trial);

  const ResponseData& data_;
  const TrainSettings& settings_;
  const CompetitionObserver& observer_;
  std::vector<CandidateForm> forms_;
  ProbePoints probes_;
  std::vector<Candidate> candidates_;
  std::vector<math::metamodel::BitVector> tried_;
  std::map<math::metamodel::BitVector, bool> is_neutral_;
  std::map<Costs, double> spent_;
  std::map<Costs, std::wstring> limited_;  ///< families that the budget ended, by name
  double budget_;
  std::vector<Eigen::Index> fit_rows_;  ///< from which kriging chooses its parameters
  std::wstring text_;
  double share_ = 0.0;
  bool is_ended_ = false;  ///< the observer threw
};

}  // namespace corvath::training
