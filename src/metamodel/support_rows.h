#pragma once

#include <Eigen/Core>

#include <initializer_list>

namespace corvath::math::metamodel {

/// One part of a model that has a row for each support point.
struct SupportRows {
  const wchar_t* name;  ///< in messages: "weights"
  Eigen::Index number;
};

/// Parts without rows are left out: a stored model may lack its support data, errors or weights.
/// @throws corvath::utils::runtime_error  two parts disagree in number; the message names them
void RequireSameRows(std::initializer_list<SupportRows> parts);

}  // namespace corvath::math::metamodel
