#pragma once

#include "design/criterion.h"
#include "design/named_sequence.h"
#include "exchange/project_description.h"

#include <string>
#include <vector>

namespace corvath::exchange {

/// Translates criteria whose texts are arithmetic of scalars into trees: numbers, constants, inputs,
/// responses, other criteria, + - * / ^ and elementary functions. A vector response may take part
/// by its elements: in sums and differences, times and over a number, and below min, max, sum and
/// mean. Macros, comparisons, definitions and all other functions have no tree.
///
/// @param outputs  names of the described responses, "name[i]" for an element of a vector
/// @param[out] described, left_out  each criterion is in one of the two, in their order
void ReadCriteria(const algorithm::datatypes::CriterionSequence& criteria,
                  const std::vector<std::wstring>& inputs, const std::vector<std::wstring>& outputs,
                  std::vector<CriterionDescription>& described, std::vector<LeftOut>& left_out);

}  // namespace corvath::exchange
