#pragma once

#include "archive/serialization.h"

namespace corvath::zel {

/// Settings of a mode that is gone. Old files hold them; a reader skips the fields, so the class
/// has none. A writer stores zeros.
struct ZELClassicSettings {
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::zel

ZEL_TRACK_ALWAYS(corvath::zel::ZELClassicSettings)
ZEL_EXPORT_KEY(corvath::zel::ZELClassicSettings, "corvath::zel::ZELClassicSettings")
