#pragma once

#include "archive/serialization.h"

#include <boost/filesystem/path.hpp>

#include <string>

namespace corvath::algorithm::datatypes {

/// A file beside the project, such as an image or a program, kept as stored.
class VRDBAttachedPath {
 public:
  virtual ~VRDBAttachedPath() = default;

  boost::filesystem::path path_;
  std::wstring title_;
  bool isPathFix_ = false;
  std::wstring arguments_;
  bool autoInsertPlaceholders_ = true;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::VRDBAttachedPath, 2)
ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::VRDBAttachedPath)
