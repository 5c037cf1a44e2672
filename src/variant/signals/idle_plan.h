#pragma once

#include "variant/signals/dft_plan.h"

#include <cstddef>
#include <memory>

/// The plan of the last transform, for the next one of its length: criteria transform signals of one
/// length at design after design, and the tables of a chirp cost as much as its transform. One plan
/// for the process, without its large buffers and of at most 64 MB.
namespace corvath::math::dft {

/// The one that is kept, if it has this length, or a new one. Any thread may take; who takes has it
/// alone.
std::unique_ptr<Plan> TakePlan(std::size_t length);
/// Keeps it in place of the one before.
void GiveBack(std::unique_ptr<Plan> plan) noexcept;
/// Frees the one that is kept.
void ReleaseIdlePlan() noexcept;

}  // namespace corvath::math::dft
