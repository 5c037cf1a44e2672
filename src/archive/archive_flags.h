#pragma once

namespace corvath::archive {

/// Construction flags of the portable archives, beside Boost's own (no_header 1, no_codecvt 2,
/// no_xml_tag_checking 4, no_tracking 8).
enum Flags : unsigned int {
  // Writer: what stands in front of a named value. 0 in these bits means checksums.
  kAnnotateChecksums = 0x1000,
  kAnnotateStrings = 0x2000,
  kAnnotateNothing = 0x3000,
  kAnnotateMask = 0x3000,
  // Reader: an annotation that differs throws, or is passed over; without these it is printed.
  kThrowOnMismatch = 0x100000,
  kSilentOnMismatch = 0x200000
};

constexpr char kSignature[] = "KBX";
constexpr unsigned int kSignatureLength = 3;
constexpr unsigned int kFormatVersion = 4;
/// Version of Boost's framing that the format is built on. It is the format's, not that of the
/// installed library: both directions use this number.
constexpr unsigned int kLibraryVersion = 17;
/// Bits of the annotation word.
constexpr unsigned int kHasAnnotations = 1;
constexpr unsigned int kAreChecksums = 2;

/// Whether `length` bytes can be the start of an archive.
bool IsPortableArchive(const char* bytes, unsigned long length);

}  // namespace corvath::archive
