#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace corvath {

/// Lets a class that is being stored switch annotations off for its body. Reached from a generic
/// archive by dynamic_cast; an archive without it has no annotations.
class portable_binary_archive_annotate_control {
 public:
  /// To be undone by EnableAnnotations(); see AnnotationPause.
  virtual void DisableAnnotations() = 0;
  virtual void EnableAnnotations() = 0;

 protected:
  ~portable_binary_archive_annotate_control() = default;
};

namespace archive {

/// Suspends the annotations of an archive, if it has any, for the life of the guard.
class AnnotationPause {
 public:
  template <class Archive>
  explicit AnnotationPause(Archive& ar)
      : control_(dynamic_cast<portable_binary_archive_annotate_control*>(&ar)) {
    if (control_ != nullptr) control_->DisableAnnotations();
  }
  AnnotationPause(const AnnotationPause&) = delete;
  AnnotationPause& operator=(const AnnotationPause&) = delete;
  ~AnnotationPause() {
    if (control_ != nullptr) control_->EnableAnnotations();
  }

 private:
  portable_binary_archive_annotate_control* control_;
};

/// What stands in front of a named value.
enum class AnnotationForm { kNone, kChecksum, kString };

/// CRC-16/KERMIT of `name`: polynomial 0x1021 reflected, initial value 0, no final inversion.
std::uint16_t AnnotationChecksum(std::string_view name);

/// The names of one archive: their checksums, and which were met under each, for the message about
/// a mismatch.
class AnnotationNames {
 public:
  /// A name with its checksum.
  struct Name {
    const char* address = nullptr;
    std::string text;  ///< at that address when it was last asked for
    std::uint16_t checksum = 0;
    bool is_literal = false;  ///< cannot change, unlike a text in memory that is used again
    bool is_noted = false;
  };

  /// Remembers names by their address, which are nearly always the same literals: working a checksum
  /// out anew costs more than reading the value. Valid until the next call.
  Name& Find(const char* name);
  /// `name` was met under its checksum.
  void Note(Name& name);
  /// ` (could be: "a", "b")`, or nothing if no name was met under `checksum`.
  std::string CouldBe(std::uint16_t checksum) const;

 private:
  std::unordered_map<std::uint16_t, std::vector<std::string>> names_;
  std::array<Name, 256> recent_;  ///< by a hash of the address
};

}  // namespace archive
}  // namespace corvath
