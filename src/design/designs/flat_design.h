#pragma once

#include "archive/serialization.h"
#include "design/designs/design.h"

#include <cstdint>

namespace corvath::algorithm::datatypes {

/// A design in its second stored form: other keys, and no messages of the run.
struct SDesign {
  enum eRunState : std::int32_t { NOT_STARTED = 0, RUNNING = 1, FINISHED = 2 };
  enum eActivationStatus : std::int32_t { ACTIVE = 0 };

  SDesign() = default;
  /// Everything of `design` but the messages of its run.
  explicit SDesign(const Design& design);
  /// The working form; it has no messages.
  Design ToDesign() const;

  EntrySequence responses;
  EntrySequence parameters;
  eRunState run_state = NOT_STARTED;
  eActivationStatus activation_state = ACTIVE;
  CriterionSequence criteria;
  bool is_approximated = false;
  DesignId id;
  DesignId is_duplicate_of;
  DesignId iteration;
  std::int32_t workflow_id = Design::kDefaultWorkflowId;
  enums::DesignTypes::eType design_type = enums::DesignTypes::UNSPECIFIED;
  std::uint64_t algo_iteration = 0;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::algorithm::datatypes
