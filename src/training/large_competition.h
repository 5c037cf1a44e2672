#pragma once

#include "training/model_competition.h"

namespace corvath::training {

/// RunCompetition for more rows than every family can bear, see there.
ChosenModel RunLargeCompetition(const ResponseData& data, const TrainSettings& settings,
                                double budget, const CompetitionObserver& observer);

}  // namespace corvath::training
