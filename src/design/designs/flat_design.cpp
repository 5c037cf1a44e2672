#include "design/designs/flat_design.h"

#include "archive/instantiate.h"

namespace corvath::algorithm::datatypes {

SDesign::SDesign(const Design& design)
    : responses(design.GetResponses()),
      parameters(design.GetParameters()),
      run_state(static_cast<eRunState>(design.GetRunState())),
      activation_state(static_cast<eActivationStatus>(design.GetActivationState())),
      criteria(design.GetCriteria()),
      is_approximated(design.IsApproximated()),
      id(design.GetId()),
      is_duplicate_of(design.GetDuplicates()),
      iteration(design.GetIteration()),
      workflow_id(design.GetWorkflowId()),
      design_type(design.GetType()),
      algo_iteration(design.GetAlgoIteration()) {}

Design SDesign::ToDesign() const {
  Design design(parameters, id);
  design.SetResponses(responses);
  design.SetRunState(static_cast<Design::eRunState>(run_state));
  design.SetActivationState(static_cast<Design::eActivationStatus>(activation_state));
  design.SetCriteria(criteria);
  design.SetApproximated(is_approximated);
  design.SetDuplicates(is_duplicate_of);
  design.SetIteration(iteration);
  design.SetWorkflowId(workflow_id);
  design.SetType(design_type);
  design.SetAlgoIteration(algo_iteration);
  return design;
}

template <class Archive>
void SDesign::serialize(Archive& ar, const unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(responses);
  ar& BOOST_SERIALIZATION_NVP(parameters);
  ar& BOOST_SERIALIZATION_NVP(run_state);
  ar& BOOST_SERIALIZATION_NVP(activation_state);
  ar& BOOST_SERIALIZATION_NVP(criteria);
  ar& BOOST_SERIALIZATION_NVP(is_approximated);
  ar& BOOST_SERIALIZATION_NVP(id);
  ar& BOOST_SERIALIZATION_NVP(is_duplicate_of);
  ar& BOOST_SERIALIZATION_NVP(iteration);
  ar& BOOST_SERIALIZATION_NVP(workflow_id);
  ar& BOOST_SERIALIZATION_NVP(design_type);
  ar& BOOST_SERIALIZATION_NVP(algo_iteration);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::SDesign)
