#pragma once

#include <string>

namespace corvath::utils {

/// The file that `path` names in the end, which need not exist: the target of its last symbolic link.
/// @throws std::system_error  the links go round in a circle, or one cannot be read
std::string FollowLinks(std::string path);

}  // namespace corvath::utils
