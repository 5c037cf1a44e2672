#include "archive/portable_iarchive.h"

#include "foundation/fresh_memory.h"
#include "foundation/standard_streams.h"
#include "foundation/text.h"

#include <boost/archive/impl/archive_serializer_map.ipp>
#include <boost/archive/impl/basic_binary_iprimitive.ipp>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>

template class boost::archive::detail::archive_serializer_map<corvath::portable_binary_iarchive>;
template class boost::archive::basic_binary_iprimitive<corvath::portable_binary_iarchive, char,
                                                       std::char_traits<char>>;

namespace corvath {
namespace {

using boost::archive::archive_exception;

constexpr unsigned int kFirstWithAnnotationWord = 2;
constexpr unsigned int kFirstWithSignedClassIds = 3;
/// Counts up to this are read without asking the stream for its position.
constexpr std::uint64_t kUncheckedCount = 256;

[[noreturn]] void ThrowOutOfRange() {
  throw portable_binary_iarchive_exception(
      portable_binary_iarchive_exception::integer_out_of_range);
}

}  // namespace

const char* portable_binary_iarchive_exception::what() const noexcept {
  return portable_code_ == integer_out_of_range ? "integer cannot be represented"
                                                : "annotation mismatch";
}

bool archive::IsPortableArchive(const char* bytes, unsigned long length) {
  if (length < 6 || std::memcmp(bytes, kSignature, kSignatureLength) != 0) return false;
  const auto version = static_cast<unsigned char>(bytes[kSignatureLength]);
  return version <= kFormatVersion && (version < kFirstWithAnnotationWord || length >= 8);
}

portable_binary_iarchive::portable_binary_iarchive(std::istream& stream, unsigned int flags)
    : basic_binary_iprimitive(*stream.rdbuf(), (flags & boost::archive::no_codecvt) != 0),
      Base(flags),
      throw_on_mismatch_((flags & archive::kThrowOnMismatch) != 0),
      silent_on_mismatch_((flags & archive::kSilentOnMismatch) != 0) {
  const std::streamoff here = m_sb.pubseekoff(0, std::ios_base::cur, std::ios_base::in);
  if (here >= 0) {
    end_ = m_sb.pubseekoff(0, std::ios_base::end, std::ios_base::in);
    if (m_sb.pubseekpos(here, std::ios_base::in) != std::streampos(here))
      throw archive_exception(archive_exception::input_stream_error);
  }
  set_library_version(boost::serialization::library_version_type(archive::kLibraryVersion));
  if ((flags & boost::archive::no_header) == 0) ReadHeader();
}

portable_binary_iarchive::~portable_binary_iarchive() = default;

void portable_binary_iarchive::ReadHeader() {
  char start[archive::kSignatureLength + 1];
  load_binary(start, sizeof start);
  const auto version = static_cast<unsigned char>(start[archive::kSignatureLength]);
  if (std::memcmp(start, archive::kSignature, archive::kSignatureLength) != 0 ||
      version > archive::kFormatVersion)
    throw archive_exception(archive_exception::invalid_signature);
  unsigned int library_version = 0;
  load(library_version);
  if (library_version > archive::kLibraryVersion)
    throw archive_exception(archive_exception::unsupported_version);
  set_library_version(boost::serialization::library_version_type(library_version));
  if (version >= kFirstWithAnnotationWord) {
    const unsigned int word = ReadWord();
    if ((word & archive::kHasAnnotations) != 0)
      form_ = (word & archive::kAreChecksums) != 0 ? archive::AnnotationForm::kChecksum
                                                   : archive::AnnotationForm::kString;
  }
  unsigned_class_ids_ = version < kFirstWithSignedClassIds;
}

std::size_t portable_binary_iarchive::TakePlainIndex() {
  static std::atomic<std::size_t> next{0};
  return next++;
}

std::size_t portable_binary_iarchive::Remaining() {
  const std::streamoff here =
      end_ < 0 ? -1 : std::streamoff(m_sb.pubseekoff(0, std::ios_base::cur, std::ios_base::in));
  if (here < 0) return std::numeric_limits<std::size_t>::max();
  return here < end_ ? static_cast<std::size_t>(end_ - here) : 0;
}

void portable_binary_iarchive::CheckCount(std::uint64_t count, std::size_t min_bytes) {
  if (count > kUncheckedCount && count > Remaining() / min_bytes)
    throw archive_exception(archive_exception::input_stream_error);
}

void portable_binary_iarchive::load_binary(void* address, std::size_t size) {
  constexpr std::size_t kLarge = std::size_t{1} << 17;
  // Memory for bytes that are there, not for what a damaged count promises.
  if (size >= kLarge) {
    const std::size_t remaining = Remaining();
    if (size <= remaining && remaining != SIZE_MAX) utils::PopulatePages(address, size);
  }
  basic_binary_iprimitive::load_binary(address, size);
}

std::uint16_t portable_binary_iarchive::ReadWord() {
  const int low = m_sb.sbumpc();
  const int high = m_sb.sbumpc();
  if (low == EOF || high == EOF) throw archive_exception(archive_exception::input_stream_error);
  return static_cast<std::uint16_t>(low | (high << 8));
}

archive::WideInteger portable_binary_iarchive::ReadInteger() {
  using Decoder = archive::IntegerDecoder;
  Decoder decoder;
  auto step = decoder.Add(ReadWord());
  while (step == Decoder::Step::kMore) step = decoder.Add(ReadWord());
  if (step == Decoder::Step::kInvalid) ThrowOutOfRange();
  return decoder.Get();
}

void portable_binary_iarchive::load(bool& value) {
  unsigned char number = 0;
  load(number);
  if (number > 1) ThrowOutOfRange();
  value = number == 1;
}

void portable_binary_iarchive::load(std::string& value) {
  std::uint64_t length = 0;
  load(length);
  CheckCount(length);
  value.clear();
  // In pieces, for streams that cannot tell how much they hold.
  constexpr std::uint64_t kPiece = 1 << 20;
  while (length > 0) {
    const auto piece = static_cast<std::size_t>(std::min(length, kPiece));
    const std::size_t old_size = value.size();
    value.resize(old_size + piece);
    load_binary(&value[old_size], piece);
    length -= piece;
  }
}

void portable_binary_iarchive::load(std::wstring& value) {
  std::string utf8;
  load(utf8);
  value = utils::FromUtf8(utf8);
}

void portable_binary_iarchive::load(boost::serialization::collection_size_type& value) {
  std::uint64_t count = 0;
  load(count);
  value = boost::serialization::collection_size_type(count);
}

void portable_binary_iarchive::load(boost::serialization::item_version_type& value) {
  std::uint32_t version = 0;
  load(version);
  value = boost::serialization::item_version_type(version);
}

void portable_binary_iarchive::load(boost::serialization::library_version_type& value) {
  std::uint16_t version = 0;
  load(version);
  value = boost::serialization::library_version_type(version);
}

void portable_binary_iarchive::load_override(boost::archive::class_id_type& id) {
  std::int16_t number = 0;
  if (unsigned_class_ids_) {
    // Those versions stored the 16 bits without sign, so that the tag of a null pointer is 65535.
    std::uint16_t bits = 0;
    load(bits);
    number = static_cast<std::int16_t>(bits);
  } else {
    load(number);
  }
  guard_.OnClassId(number);
  id = boost::archive::class_id_type(static_cast<int>(number));
}

void portable_binary_iarchive::load_override(boost::archive::class_name_type& name) {
  std::string text;
  load(text);
  if (text.size() >= BOOST_SERIALIZATION_MAX_KEY_SIZE)
    throw archive_exception(archive_exception::invalid_class_name);
  guard_.OnClassName(text.c_str());
  std::memcpy(static_cast<char*>(name), text.c_str(), text.size() + 1);
}

void portable_binary_iarchive::load_override(boost::archive::object_id_type& id) {
  std::uint32_t number = 0;
  load(number);
  guard_.OnObjectId(number);
  id = boost::archive::object_id_type(number);
}

void portable_binary_iarchive::load_override(boost::archive::tracking_type& tracking) {
  bool value = false;
  load(value);
  if (opening_ != nullptr) opening_->is_tracked = value;
  tracking = boost::archive::tracking_type(value);
}

void portable_binary_iarchive::load_override(boost::archive::version_type& version) {
  std::uint32_t number = 0;
  load(number);
  if (opening_ != nullptr) opening_->version = number;
  opening_ = nullptr;  // what follows belongs to its parts
  version = boost::archive::version_type(number);
}

void portable_binary_iarchive::ReadAnnotation(const char* name) {
  if (form_ == archive::AnnotationForm::kNone || suspended_ != 0 || name == nullptr) return;
  if (form_ == archive::AnnotationForm::kChecksum) {
    archive::AnnotationNames::Name& expected = names_.Find(name);
    const std::uint16_t got = ReadWord();
    if (got == expected.checksum)
      names_.Note(expected);
    else if (!silent_on_mismatch_)
      OnMismatch("expected " + std::to_string(expected.checksum) + "(\"" + name + "\"), got " +
                 std::to_string(got) + names_.CouldBe(got));
  } else {
    std::string got;
    load(got);
    if (got != name && !silent_on_mismatch_)
      OnMismatch(std::string("expected \"") + name + "\", got \"" + got + "\"");
  }
}

void portable_binary_iarchive::OnMismatch(const std::string& message) const {
  if (throw_on_mismatch_)
    throw portable_binary_iarchive_exception(
        portable_binary_iarchive_exception::annotation_mismatch);
  utils::PrintError("portable_binary_iarchive: annotations differ, " + message + '\n');
}

}  // namespace corvath
