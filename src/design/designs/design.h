#pragma once

#include "archive/serialization.h"
#include "design/criterion.h"
#include "design/designs/run_info.h"
#include "design/hierarchical_id.h"
#include "design/named_sequence.h"

#include <cstdint>
#include <utility>

namespace corvath::enums {

/// Kinds of designs. Numbers of a file pass through unchanged.
struct DesignTypes {
  enum eType : std::int32_t { UNSPECIFIED = 0 };
};

}  // namespace corvath::enums

namespace corvath::algorithm::datatypes {

/// One evaluated or evaluable point of a project: values of its parameters, responses and criteria,
/// and the state of its run.
class Design {
 public:
  enum eRunState : std::int32_t { NOT_STARTED = 0, RUNNING = 1, FINISHED = 2 };
  enum eActivationStatus : std::int32_t { ACTIVE = 0 };

  /// The workflow step of a design that no file names one for.
  static constexpr std::int32_t kDefaultWorkflowId = 22;

  Design() = default;
  /// Not started, with default states and without responses or criteria.
  Design(EntrySequence parameters, DesignId id);
  /// A copy of `pattern` with other parameters, which must be as many, if it has any.
  /// @throws utils::logic_error  another number
  Design(const Design& pattern, EntrySequence parameters);

  const EntrySequence& GetParameters() const { return parameters_; }
  EntrySequence& GetParameters() { return parameters_; }
  /// @throws utils::logic_error  the design holds parameters, and their number differs
  void SetParameters(EntrySequence parameters);
  const EntrySequence& GetResponses() const { return responses_; }
  EntrySequence& GetResponses() { return responses_; }
  /// @throws utils::logic_error  the design holds responses, and their number differs
  void SetResponses(EntrySequence responses);
  const CriterionSequence& GetCriteria() const { return criteria_; }
  CriterionSequence& GetCriteria() { return criteria_; }
  void SetCriteria(CriterionSequence criteria) { criteria_ = std::move(criteria); }

  /// Messages of the run.
  const RunInfoContainer& GetStatus() const { return status_; }
  RunInfoContainer& GetStatus() { return status_; }
  void SetStatus(RunInfoContainer status) { status_ = std::move(status); }
  /// Replaces the messages by one of that code without texts, and derives the run state: the codes
  /// 501 and 502 tell that the run did not start or goes on, any other that it is over.
  void SetStatus(RunInfoMeta::eRunInfo code);
  eRunState GetRunState() const { return runstate_; }
  void SetRunState(eRunState state) { runstate_ = state; }
  /// Whether the design counts.
  eActivationStatus GetActivationState() const { return activation_state_; }
  void SetActivationState(eActivationStatus state) { activation_state_ = state; }
  /// The responses come from a metamodel.
  bool IsApproximated() const { return isapproximated_; }
  void SetApproximated(bool approximated) { isapproximated_ = approximated; }

  const DesignId& GetId() const { return id_; }
  void SetId(DesignId id) { id_ = std::move(id); }
  /// Id of the design of which this one is a copy.
  const DesignId& GetDuplicates() const { return duplicates_; }
  void SetDuplicates(DesignId id) { duplicates_ = std::move(id); }
  /// The iteration in which it arose.
  const DesignId& GetIteration() const { return iteration_; }
  void SetIteration(DesignId id) { iteration_ = std::move(id); }
  std::int32_t GetWorkflowId() const { return workflow_id_; }
  void SetWorkflowId(std::int32_t id) { workflow_id_ = id; }
  enums::DesignTypes::eType GetType() const { return type_; }
  void SetType(enums::DesignTypes::eType type) { type_ = type; }
  /// Number of the algorithm's iteration.
  std::uint64_t GetAlgoIteration() const { return algo_iteration_; }
  void SetAlgoIteration(std::uint64_t iteration) { algo_iteration_ = iteration; }

  bool operator==(const Design& other) const;
  bool operator!=(const Design& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  EntrySequence parameters_;
  EntrySequence responses_;
  RunInfoContainer status_;
  eRunState runstate_ = NOT_STARTED;
  DesignId duplicates_;
  eActivationStatus activation_state_ = ACTIVE;
  CriterionSequence criteria_;
  bool isapproximated_ = false;
  DesignId id_;
  DesignId iteration_;
  std::int32_t workflow_id_ = kDefaultWorkflowId;
  enums::DesignTypes::eType type_ = enums::DesignTypes::UNSPECIFIED;
  std::uint64_t algo_iteration_ = 0;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::Design, 6)
