#pragma once

#include <functional>
#include <string>

namespace corvath::study {

/// Told now and then how far the work is: the share that is done, 0 to 1, negative while it is not
/// known, and what is in work. False ends it with Cancelled. An empty one is not called.
using Progress = std::function<bool(double share, const std::string& text)>;

}  // namespace corvath::study
