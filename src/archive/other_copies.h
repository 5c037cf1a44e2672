#pragma once

namespace corvath::archive {

/// Looks whether the process holds another copy of this library (a second version, or one that a
/// host brings along). If so, both stay loaded until the process ends, whatever is closed: Boost's
/// shared library keeps one registry of classes and casts for all copies, and a copy that is
/// unloaded takes entries away that the others need.
///
/// Called while the library is loaded. @param export_key  of any class of the library
void KeepLoadedWithOtherCopies(const char* export_key);

}  // namespace corvath::archive
