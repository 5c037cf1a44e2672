#pragma once

namespace corvath::utils {

/// Whether the calling thread's stack has less left than a step that does not recurse may need
/// (24 kB, of which throwing takes some). False where the stack's bounds are not known, such as on
/// one that the host has made for a coroutine. Costs a comparison, once per thread some 50 us.
bool IsStackLow();

}  // namespace corvath::utils
