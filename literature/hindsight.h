#pragma once

#include "literature/published_functions.h"
#include "training/model_competition.h"

#include <cstdint>

namespace literature {

/// What fresh points tell about a model that was chosen without them.
struct Hindsight {
  double determination;  ///< 1 - SSE / SST there: what the CoP foretold
  double ratio;          ///< of the model's root mean square error to the smallest of a candidate
};

/// On 2000 uniform points of the function.
Hindsight LookBack(const PublishedFunction& function, const corvath::training::ChosenModel& chosen,
                   const corvath::training::ResponseData& data, std::uint32_t seed);

/// What a user may expect of a CoP from 100 designs, and of a choice.
inline bool IsHonest(double difference) {
  return difference > -0.05 && difference < 0.05;
}
inline bool IsWellChosen(double ratio) {
  return ratio <= 1.25;
}

}  // namespace literature
