#pragma once

#include "analysis/study_model.h"

namespace corvath::study {

/// "response", "value" or "limit".
inline const char* KindText(const analysis::StudyQuantity& quantity) {
  switch (quantity.kind) {
    case analysis::StudyQuantity::Kind::kResponse:
      return "response";
    case analysis::StudyQuantity::Kind::kValue:
      return "value";
    default:
      return "limit";
  }
}

}  // namespace corvath::study
