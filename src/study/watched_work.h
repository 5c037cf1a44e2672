#pragma once

#include "study/progress.h"

#include <functional>

namespace corvath::study {

/// Does long work on a thread of its own, while this thread passes its progress on some twenty times
/// a second: whatever threads the work uses, the caller's function runs on the caller's thread, and
/// is asked often enough to cancel. Without a function the work is done here.
/// @param work  gets a function that any of its threads may call; when that returns false, it ends
/// @throws what `work` throws; Cancelled when the caller said so and the work has ended
void RunWatched(const Progress& progress, const std::function<void(const Progress&)>& work);

}  // namespace corvath::study
