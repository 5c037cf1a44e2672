#pragma once

#include "calculator/workspace.h"

namespace fuzz {

/// Limits that let a text fail in milliseconds where it would take seconds.
inline void Limit(corvath::calculator::Workspace& workspace) {
  workspace.max_entries = 20000;
  workspace.max_steps = 5000;
  workspace.texts.SetMaxLength(5000);
}

}  // namespace fuzz
