#pragma once

#include "metamodel/surrogate.h"
#include "training/candidate.h"
#include "training/cross_validation.h"

#include <boost/shared_ptr.hpp>

#include <vector>

namespace sample_projects {

/// A chosen model with its quality figures.
struct TrainedModel {
  boost::shared_ptr<corvath::math::metamodel::SurrogateBase> model;  ///< built, with its errors
  corvath::math::metamodel::BitVector subspace;                      ///< the inputs that it uses
  corvath::math::metamodel::SubspaceResults results;
};

/// The best of some forms by CoP, over the inputs that the competition finds for each.
/// @throws TrainingError, std::runtime_error  no form but the constant can be built
TrainedModel TrainForms(const std::vector<corvath::training::CandidateForm>& forms,
                        const corvath::training::ResponseData& data);

/// The polynomials, with and without a Box-Cox transform of the response.
TrainedModel TrainPolynomial(const corvath::training::ResponseData& data);

/// Thin plate splines, which no training offers: the family has no cross-validation of its own. Its
/// CoP comes from fits without each group.
TrainedModel TrainThinPlateSplines(const corvath::training::ResponseData& data);

}  // namespace sample_projects
