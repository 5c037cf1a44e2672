#pragma once

#include "design/designs/input_columns.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::algorithm::datatypes {

/// A matrix with one row per design and one column per property, in the order of the lists.
/// @throws see InputColumns::ToMatrix
Eigen::MatrixXd DesignsToMatrix(const std::vector<Design>& designs,
                                const NamedProperties& properties);

/// One parameter sequence per row of a matrix with one column per property.
/// @throws see InputColumns::ToSequences
std::vector<EntrySequence> MatrixToDesigns(const Eigen::Ref<const Eigen::MatrixXd>& matrix,
                                           const NamedProperties& properties);

}  // namespace corvath::algorithm::datatypes
