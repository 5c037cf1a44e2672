#include "archive/portable_oarchive.h"

#include "archive/integer_code.h"
#include "foundation/text.h"

#include <boost/archive/impl/archive_serializer_map.ipp>
#include <boost/archive/impl/basic_binary_oprimitive.ipp>

template class boost::archive::detail::archive_serializer_map<corvath::portable_binary_oarchive>;
template class boost::archive::basic_binary_oprimitive<corvath::portable_binary_oarchive, char,
                                                       std::char_traits<char>>;

#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "The archive stores doubles as this machine holds them: little-endian IEEE 754."
#endif

namespace corvath {
namespace {

archive::AnnotationForm FormOf(unsigned int flags) {
  if ((flags & boost::archive::no_header) != 0) return archive::AnnotationForm::kNone;
  switch (flags & archive::kAnnotateMask) {
    case archive::kAnnotateStrings:
      return archive::AnnotationForm::kString;
    case archive::kAnnotateNothing:
      return archive::AnnotationForm::kNone;
    default:
      return archive::AnnotationForm::kChecksum;
  }
}

}  // namespace

portable_binary_oarchive::portable_binary_oarchive(std::ostream& stream, unsigned int flags)
    : basic_binary_oprimitive(*stream.rdbuf(), (flags & boost::archive::no_codecvt) != 0),
      Base(flags),
      form_(FormOf(flags)) {
  if ((flags & boost::archive::no_header) == 0) WriteHeader();
}

portable_binary_oarchive::~portable_binary_oarchive() = default;

void portable_binary_oarchive::WriteHeader() {
  save_binary(archive::kSignature, archive::kSignatureLength);
  const char version = static_cast<char>(archive::kFormatVersion);
  save_binary(&version, 1);
  WriteUnsigned(archive::kLibraryVersion);
  unsigned int word = 0;
  if (form_ != archive::AnnotationForm::kNone) word |= archive::kHasAnnotations;
  if (form_ == archive::AnnotationForm::kChecksum) word |= archive::kAreChecksums;
  const char bytes[2] = {static_cast<char>(word), 0};
  save_binary(bytes, sizeof bytes);
}

void portable_binary_oarchive::WriteUnsigned(std::uint64_t value) {
  char bytes[archive::kMaxIntegerBytes];
  save_binary(bytes, archive::EncodeUnsigned(value, bytes));
}

void portable_binary_oarchive::WriteSigned(std::int64_t value) {
  char bytes[archive::kMaxIntegerBytes];
  save_binary(bytes, archive::EncodeSigned(value, bytes));
}

void portable_binary_oarchive::save(const std::string& value) {
  WriteUnsigned(value.size());
  save_binary(value.data(), value.size());
}

void portable_binary_oarchive::save(const std::wstring& value) {
  save(utils::ToUtf8Strict(value));
}

void portable_binary_oarchive::WriteAnnotation(const char* name) {
  if (form_ == archive::AnnotationForm::kNone || suspended_ != 0 || name == nullptr) return;
  if (form_ == archive::AnnotationForm::kString) {
    save(std::string(name));
  } else {
    const unsigned int checksum = archive::AnnotationChecksum(name);
    const char bytes[2] = {static_cast<char>(checksum & 0xff), static_cast<char>(checksum >> 8)};
    save_binary(bytes, sizeof bytes);
  }
}

}  // namespace corvath
