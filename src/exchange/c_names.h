#pragma once

#include "exchange/identifiers.h"
#include "exchange/project_description.h"

#include <string>
#include <string_view>

namespace corvath::exchange {

/// What a generated C file calls things: all begins with the prefix, macros and enumerators with it
/// in capitals.
class CNames {
 public:
  CNames(const ProjectDescription& project, std::string prefix);

  const std::string& GetUpper() const { return upper_; }
  /// "truss_lower" of "lower".
  std::string Own(std::string_view name) const { return prefix_ + '_' + std::string(name); }
  std::string Predict(std::size_t k) const { return Own("predict_" + ids_.responses[k]); }
  std::string Gradient(std::size_t k) const { return Own("gradient_" + ids_.responses[k]); }
  std::string Criterion(std::size_t c) const { return Own("criterion_" + ids_.criteria[c]); }
  /// A table of numbers of response k.
  std::string Table(std::string_view what, std::size_t k) const;

  // Parameters of functions.
  std::string Inputs() const { return Array("const double inputs", num_inputs_); }
  std::string NewOutputs() const { return Array("double outputs", ids_.responses.size()); }
  std::string Outputs() const { return "const " + NewOutputs(); }
  std::string NewCriteria() const { return Array("double criteria", ids_.criteria.size()); }
  std::string NewGradient() const { return Array("double gradient", num_inputs_); }
  static std::string Array(const std::string& name, std::size_t n);

  /// `text` with the prefix for each "@", in capitals for each "@@".
  std::string Replaced(std::string_view text) const;

 private:
  std::string prefix_;
  std::string upper_;
  std::size_t num_inputs_;
  ProjectIdentifiers ids_;
};

}  // namespace corvath::exchange
