#pragma once

namespace corvath::study::api {

/// The text of this thread's last call, see zelstudy_last_error().
void ClearLastError() noexcept;
/// Keeps `text` as valid UTF-8, or a fixed text where there is no memory for it.
void SetLastError(const char* text) noexcept;
const char* GetLastError() noexcept;

}  // namespace corvath::study::api
