#pragma once

#include "design/named_sequence.h"

namespace corvath::algorithm::datatypes {

/// Merges scalar responses named "base[i]" into one `Variant` VECTOR per base name. It stands where
/// the first of its elements stood and is as long as the largest index asks for; an element that is
/// missing or has no number is NaN. Other responses stay as they are, in order; so do names with a
/// negative index or one of 2^20 and above, which no response of a project can have.
EntrySequence MergeIndexedResponses(EntrySequence responses);

}  // namespace corvath::algorithm::datatypes
