#pragma once

#include <string>
#include <vector>

namespace corvath::study {

/// A coefficient of prognosis; "-" for -1, where there is none.
std::string CoPText(double cop, int digits);

/// The inputs that a model uses with their CoPs, the most important first.
/// @param filtered  whether the model leaves each input out
/// @param cops      of each input
std::string UsedInputs(const std::vector<std::string>& inputs, const std::vector<bool>& filtered,
                       const std::vector<double>& cops);

/// "y: a, b": the inputs of a response whose loss is clearly above its CoP; empty for none. See
/// UsedInputs for the arguments.
std::string LargeLosses(const std::string& response, double cop,
                        const std::vector<std::string>& inputs, const std::vector<bool>& filtered,
                        const std::vector<double>& cops);

/// Explains such losses. @param found  those that are not empty; none: no text
std::string LargeLossNote(const std::vector<std::string>& found);

}  // namespace corvath::study
