#pragma once

#include "foundation/log.h"
#include "optimizer/settings_base.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace corvath::algorithm::optimizer {

/// An optimiser never computes a response: the client asks for designs, computes them anywhere and
/// hands the results back. This class owns the protocol and checks each step of it:
///
///     optimizer.Initialize(settings);
///     do {
///       designs = optimizer.GetNextDesigns();     // no rows is legal, above all in the first pass
///       ... compute ...
///       optimizer.SetInputs(designs);             // as really computed
///       optimizer.SetCriteriaSuccessInfo(bits);
///       optimizer.SetObjectives(f);               // and SetEqualities, SetInequalities
///       optimizer.Appraise();
///       optimizer.Adapt();
///     } while (!optimizer.IsTerminated());
///     optimizer.Finalize();
///
/// A set of designs has one row per design and one column per input; responses have one row per
/// design. Results belong to one round: the designs of the next one drop them. Every refusal is a
/// utils::runtime_error and leaves the state as it was. Not locked.
template <class T>
class OptimizerBase;

template <>
class OptimizerBase<double> {
 public:
  using Matrix = Eigen::MatrixXd;
  using Vector = Eigen::VectorXd;
  using BitVector = std::vector<bool>;

  enum class State : std::int32_t {
    kCreated = 0,
    kInitialized = 1,
    kDesignsOut = 2,
    kAppraised = 3,
    kAdapted = 4,
    kTerminated = 5,
    kFinalized = 6
  };

  /// What is kept of an appraised round.
  struct Round {
    std::uint64_t num_designs;
    std::uint64_t num_succeeded;
  };

  /// Checks the settings, forgets any earlier run and starts a new one; in any state.
  /// @throws utils::runtime_error  the settings are refused
  /// @throws std::bad_cast         they are those of another algorithm
  virtual void Initialize(const OptimizerSettingsBase<double>& settings) = 0;

 protected:
  virtual void AppraiseStep() = 0;  ///< the algorithm's answer to a round of results
  virtual void AdaptStep() = 0;     ///< its preparation of the next designs
  virtual void FinalizeStep() = 0;  ///< its part in Finalize()
  virtual bool IsDone() const = 0;  ///< whether the run is over

 public:
  /// Whether the run ended at a point that meets the conditions of optimality.
  virtual bool IsConverged() const = 0;

 protected:
  /// Takes the designs as computed; an algorithm that overrides it calls this one.
  virtual void OnSetInputs(const Matrix& designs) { inputs_ = designs; }

 public:
  /// The best design of the run so far and its responses: one row each, columns as in the settings;
  /// no rows before the algorithm has accepted a first design.
  virtual Matrix GetBestInputs() const = 0;
  virtual Matrix GetBestObjectives() const = 0;
  virtual Matrix GetBestEqualities() const = 0;
  virtual Matrix GetBestInequalities() const = 0;
  /// Numbers of the best designs among all appraised ones.
  /// @throws utils::runtime_error  the algorithm cannot tell
  virtual std::vector<std::uint64_t> GetBestIndex() const = 0;

  /// Ends the loop; Finalize must follow.
  virtual void Terminate();
  virtual ~OptimizerBase() = default;
  virtual void SetLogger(const boost::shared_ptr<utils::LogBase>& logger) { logger_ = logger; }
  virtual OptimizerBase* Clone() const = 0;  ///< a copy, in the same state; owned by the caller

  /// The designs that await responses; may be repeated before Appraise.
  const Matrix& GetNextDesigns();
  /// The designs as computed: the expected number of rows, one column per input. After
  /// GetNextDesigns() alone, as all that hand results back.
  void SetInputs(const Matrix& designs);
  /// One bit per design: its evaluation succeeded. A design that failed may hold any responses.
  void SetCriteriaSuccessInfo(const BitVector& bits);
  /// Responses of the expected designs: one row per design, one column per response.
  void SetObjectives(const Matrix& values);
  void SetEqualities(const Matrix& values);
  void SetInequalities(const Matrix& values);
  /// Takes the round's results; the run may end here. Repeating it changes nothing.
  /// @throws utils::runtime_error  results are missing, or one of a succeeded design is not finite
  void Appraise();
  /// Prepares the next designs. After Appraise(); does nothing once the run is over.
  void Adapt();
  bool IsTerminated() const { return state_ == State::kTerminated || state_ == State::kFinalized; }
  /// Closes a run that is over; repeating it changes nothing.
  void Finalize();

  State GetState() const { return state_; }
  /// Designs of all appraised rounds, failed ones included.
  std::uint64_t GetNumAppraised() const { return num_appraised_; }
  const std::vector<Round>& GetRounds() const { return rounds_; }

 protected:
  OptimizerBase() = default;
  OptimizerBase(const OptimizerBase&) = default;
  OptimizerBase& operator=(const OptimizerBase&) = default;

  /// Takes over the sizes of a problem and forgets every earlier round.
  void Restart(const OptimizerSettingsBase<double>& settings);
  void SetAwaitingDesigns(const Matrix& designs);

  State state_ = State::kCreated;
  std::uint64_t ninputs_ = 0;
  std::uint64_t nobjectives_ = 0;
  std::uint64_t nequalities_ = 0;
  std::uint64_t ninequalities_ = 0;
  Matrix inputs_;      ///< as computed
  BitVector success_;  ///< one bit per design
  Matrix objectives_;
  Matrix equalities_;
  Matrix inequalities_;
  std::uint64_t num_appraised_ = 0;
  std::vector<Round> rounds_;
  boost::shared_ptr<utils::LogBase> logger_;

 private:
  void DropResults();
  void CheckResponses(const Matrix& values, std::uint64_t columns, const wchar_t* requires_text,
                      const wchar_t* dimension_text, const wchar_t* number_text) const;
  void CheckCounts() const;
  void CheckInputsFinite() const;
  void CheckResponsesFinite() const;

  Matrix awaiting_;
  std::uint64_t num_expected_ = 0;  ///< rows of awaiting_
};

}  // namespace corvath::algorithm::optimizer
