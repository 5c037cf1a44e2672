#include "design/designs/design_conversion.h"

namespace corvath::algorithm::datatypes {

Eigen::MatrixXd DesignsToMatrix(const std::vector<Design>& designs,
                                const NamedProperties& properties) {
  return InputColumns(properties).ToMatrix(designs);
}

std::vector<EntrySequence> MatrixToDesigns(const Eigen::Ref<const Eigen::MatrixXd>& matrix,
                                           const NamedProperties& properties) {
  return InputColumns(properties).ToSequences(matrix);
}

}  // namespace corvath::algorithm::datatypes
