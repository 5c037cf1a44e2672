#pragma once

#include "project/settings/zel_settings.h"
#include "training/train_settings.h"

namespace corvath::training {

/// The record that a trained project keeps of how its models were chosen. What it has no field for
/// (seed, groups, budget) is not kept.
math::metamodel::ZELSettings RecordOf(const TrainSettings& settings);

}  // namespace corvath::training
