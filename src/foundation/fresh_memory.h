#pragma once

#include <cstddef>

namespace corvath::utils {

/// Brings the pages of a block that is about to be filled into memory, all in one call: a fault for
/// each page takes longer than the bytes do that are read into it. Does nothing on systems that cannot.
/// What the block holds stays.
void PopulatePages(void* begin, std::size_t size);

}  // namespace corvath::utils
