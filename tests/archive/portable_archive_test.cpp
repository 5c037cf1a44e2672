#include "support/archive_round_trip.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

namespace corvath {
namespace {

using boost::archive::archive_exception;
using Bytes = std::string;

Bytes FromHex(const std::string& hex) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return bytes;
}

/// An archive of format version 4 with checksum annotations starts so.
const Bytes kHeader = FromHex("4B42580411000300");

struct Plain {
  std::int32_t number_ = 0;
  double real_ = 0.0;
  std::wstring text_;
  bool flag_ = false;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(number_);
    ar& BOOST_SERIALIZATION_NVP(real_);
    ar& BOOST_SERIALIZATION_NVP(text_);
    ar& BOOST_SERIALIZATION_NVP(flag_);
  }
};

/// The same fields under one other name.
struct Renamed : Plain {
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& boost::serialization::make_nvp("other_", number_);
    ar& BOOST_SERIALIZATION_NVP(real_);
    ar& BOOST_SERIALIZATION_NVP(text_);
    ar& BOOST_SERIALIZATION_NVP(flag_);
  }
};

TEST(PortableArchive, WritesTheFramingByteForByte) {
  // Header, tracking 0, class version 0, then each value behind the checksum of its name.
  Plain plain;
  plain.number_ = 300;
  plain.real_ = 1.0;
  plain.text_ = L"\u00e9";
  plain.flag_ = true;
  const Bytes bytes = support::Save(plain);
  const auto checksum = [](const char* name) {
    const unsigned value = archive::AnnotationChecksum(name);
    return Bytes{static_cast<char>(value & 0xff), static_cast<char>(value >> 8)};
  };
  EXPECT_EQ(bytes, kHeader + FromHex("00000000") + checksum("number_") + FromHex("2C01") +
                       checksum("real_") + FromHex("000000000000F03F") + checksum("text_") +
                       FromHex("0200C3A9") + checksum("flag_") + FromHex("0100"));
  // Published check value of CRC-16/KERMIT, and values of the format's own names.
  EXPECT_EQ(archive::AnnotationChecksum("123456789"), 0x2189);
  EXPECT_EQ(archive::AnnotationChecksum("item"), 0x2030);
  EXPECT_EQ(archive::AnnotationChecksum("count"), 0xE4E1);
  EXPECT_EQ(archive::AnnotationChecksum("rows"), 0xD069);
}

TEST(PortableArchive, RoundTripsEveryPrimitiveInEveryAnnotationForm) {
  Plain plain;
  plain.number_ = std::numeric_limits<std::int32_t>::min();
  plain.text_ = L"a\u0000b\U0001F600";
  for (const double value : {std::nan("0x7"), -HUGE_VAL, -0.0, 5e-324})
    for (const unsigned flags : {0u, 0x1000u, 0x2000u, 0x3000u, 1u}) {
      plain.real_ = value;
      std::stringstream stream(support::Save(plain, flags));
      portable_binary_iarchive ar(stream, archive::kThrowOnMismatch | (flags & 1u));
      Plain read;
      ar >> read;
      EXPECT_EQ(read.number_, plain.number_) << flags;
      EXPECT_EQ(std::memcmp(&read.real_, &value, sizeof value), 0) << flags;
      EXPECT_EQ(read.text_, plain.text_) << flags;
    }
}

TEST(PortableArchive, MismatchOfAnnotationsFollowsThePolicy) {
  const auto read = [](const Bytes& bytes, unsigned flags) {
    Renamed renamed;
    support::LoadInto(bytes, renamed, flags);
    return renamed.number_;
  };
  Plain plain;
  plain.number_ = 7;
  for (const unsigned writer : {archive::kAnnotateChecksums, archive::kAnnotateStrings}) {
    const Bytes bytes = support::Save(plain, writer);
    EXPECT_THROW(read(bytes, archive::kThrowOnMismatch), portable_binary_iarchive_exception);
    testing::internal::CaptureStderr();
    EXPECT_EQ(read(bytes, archive::kSilentOnMismatch), 7);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(read(bytes, 0), 7);
    const std::string printed = testing::internal::GetCapturedStderr();
    const auto sum = [](const char* name) {
      return std::to_string(archive::AnnotationChecksum(name));
    };
    if (writer == archive::kAnnotateStrings)
      EXPECT_EQ(printed,
                "portable_binary_iarchive: annotations differ, expected \"other_\", got "
                "\"number_\"\n");
    else
      EXPECT_EQ(printed, "portable_binary_iarchive: annotations differ, expected " + sum("other_") +
                             "(\"other_\"), got " + sum("number_") + "\n");
  }
}

TEST(PortableArchive, NamesASeenNameInTheMismatch) {
  // The second "number_" stands where "other_" is expected: the checksum is known by then.
  std::stringstream stream;
  {
    portable_binary_oarchive out(stream);
    const int number_ = 1;
    out << BOOST_SERIALIZATION_NVP(number_) << BOOST_SERIALIZATION_NVP(number_);
  }
  portable_binary_iarchive in(stream);
  int number_ = 0;
  int other_ = 0;
  testing::internal::CaptureStderr();
  in >> BOOST_SERIALIZATION_NVP(number_) >> BOOST_SERIALIZATION_NVP(other_);
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_NE(printed.find("(could be: \"number_\")\n"), Bytes::npos) << printed;
}

TEST(PortableArchive, HeaderDecidesAboutReading) {
  // bytes, code: of archive_exception, -1: reads 7
  const std::pair<const char*, int> cases[] = {
      {"4B425804110000000700", -1},                                    // no annotations
      {"4B425801110007000000", -1},                                    // version 1: no word
      {"4B425800110007000000", -1},                                    // version 0
      {"4B425804030000000700", -1},                                    // older library
      {"4B425805110000000700", archive_exception::invalid_signature},  // newer format
      {"4B425904110000000700", archive_exception::invalid_signature},
      {"4B425804120000000700", archive_exception::unsupported_version},
      {"4B42", archive_exception::input_stream_error},
      {"4B4258041100", archive_exception::input_stream_error},
      {"", archive_exception::input_stream_error},
  };
  for (const auto& [hex, code] : cases) {
    std::istringstream stream(FromHex(hex));
    try {
      portable_binary_iarchive ar(stream);
      int value = 0;
      ar >> value;
      EXPECT_EQ(code, -1) << hex;
      EXPECT_EQ(value, 7) << hex;
    } catch (const archive_exception& error) {
      EXPECT_EQ(error.code, code) << hex;
    }
  }
}

TEST(PortableArchive, RecognisesTheStartOfAnArchive) {
  const auto is_archive = [](const std::string& hex) {
    const Bytes bytes = FromHex(hex);
    return archive::IsPortableArchive(bytes.data(), bytes.size());
  };
  EXPECT_TRUE(is_archive("4B42580411000300"));
  EXPECT_FALSE(is_archive("4B425804110003"));  // from version 2 on 8 bytes
  EXPECT_TRUE(is_archive("4B4258011100"));
  EXPECT_FALSE(is_archive("4B42580111"));
  EXPECT_FALSE(is_archive("4B42580511000300"));
  EXPECT_FALSE(is_archive("58425804110003FF"));
}

TEST(PortableArchive, RefusesABoolThatIsNoBoolAndTextThatIsNoUnicode) {
  std::istringstream stream(FromHex("4B425804110000000200"));
  portable_binary_iarchive ar(stream);
  bool flag = false;
  EXPECT_MESSAGE("integer cannot be represented", ar >> flag);
  Plain plain;
  plain.text_ = std::wstring(1, static_cast<wchar_t>(0xD800));
  EXPECT_MESSAGE("invalid input character", support::Save(plain));
}

template <class T>
void ExpectRoundTrip(const T& value) {
  EXPECT_TRUE(support::Load<T>(support::Save(value)) == value);
}

TEST(PortableArchive, MatrixBodyHasNoAnnotations) {
  const Eigen::MatrixXd matrix{{1, 2, 3}, {4, 5, 6}};
  const Bytes bytes = support::Save(matrix);
  // tracking, class version 2, cols, rows, then the doubles column by column
  ASSERT_EQ(bytes.size(), kHeader.size() + 4 + 4 + 6 * 8);
  EXPECT_EQ(bytes.substr(kHeader.size(), 8), FromHex("0000020003000200"));
  double second = 0.0;
  std::memcpy(&second, bytes.data() + kHeader.size() + 8 + 8, 8);
  EXPECT_EQ(second, 4.0);
  ExpectRoundTrip(matrix);
  for (const Eigen::Index size : {5, 0})
    ExpectRoundTrip(Eigen::VectorXd(Eigen::VectorXd::LinSpaced(size, -1.0, 1.0)));
  Eigen::Matrix<std::uint64_t, Eigen::Dynamic, 1> counts(3);
  counts << 0, 300, std::numeric_limits<std::uint64_t>::max();
  ExpectRoundTrip(counts);
}

/// A matrix as class version 1 wrote it: every value with its annotation.
struct OldMatrix {
  Eigen::MatrixXd matrix;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    std::int64_t cols = matrix.cols();
    std::int64_t rows = matrix.rows();
    ar& BOOST_SERIALIZATION_NVP(cols) & BOOST_SERIALIZATION_NVP(rows);
    for (Eigen::Index i = 0; i < matrix.size(); ++i)
      ar& boost::serialization::make_nvp("item", matrix.data()[i]);
  }
};

TEST(PortableArchive, ReadsAnnotatedMatricesOfOldFiles) {
  OldMatrix old;
  old.matrix = Eigen::MatrixXd::Random(3, 2);
  EXPECT_EQ(support::Load<Eigen::MatrixXd>(support::Save(old)), old.matrix);
}

TEST(PortableArchive, RoundTripsCollections) {
  ExpectRoundTrip(std::map<std::wstring, std::vector<double>>{{L"a", {1.0, 2.0}}, {L"b", {}}});
  ExpectRoundTrip(std::multimap<std::int32_t, std::wstring>{{1, L"x"}, {1, L"y"}, {0, L"z"}});
  ExpectRoundTrip(std::list<std::pair<double, double>>{{1.0, 2.0}, {3.0, 4.0}});
  ExpectRoundTrip(std::deque<std::wstring>{L"p", L"q"});
  ExpectRoundTrip(std::set<std::uint64_t>{3, 1, 2});
  ExpectRoundTrip(boost::unordered_set<std::uint64_t>{3, 1, 2});
  ExpectRoundTrip(boost::optional<double>(2.5));
  ExpectRoundTrip(boost::filesystem::path("dir/f\u00fc.vrdb"));
  for (const std::size_t size : {0u, 1u, 8u, 9u, 17u}) {
    std::vector<bool> bits(size);
    for (std::size_t i = 0; i < size; i += 3) bits[i] = true;
    ExpectRoundTrip(bits);
  }
  const boost::uuids::uuid uuid{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
  ExpectRoundTrip(uuid);
  EXPECT_EQ(support::Save(uuid).size(), kHeader.size() + 16);  // nothing but the block
}

struct Pointed {
  std::int32_t number_ = 0;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(number_);
  }
};

/// Bits, then an object behind a pointer, whose class id tells how many classes came before.
struct BitsAndPointer {
  std::vector<bool> bits_{true, false, true};
  Pointed* pointed_ = nullptr;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(bits_) & BOOST_SERIALIZATION_NVP(pointed_);
  }
};

TEST(PortableArchive, BitVectorTakesAClassIdButHasNoClassRecord) {
  Pointed pointed;
  BitsAndPointer object;
  object.pointed_ = &pointed;
  EXPECT_EQ(support::Save(object, archive::kAnnotateNothing).substr(kHeader.size(), 14),
            FromHex("00000000"  // class 0, the object: tracked, version
                    "0300"      // class 1, the bits: num_bits
                    "0100"      // class 2, the bytes: count, item_version, one byte as an integer
                    "0000"
                    "0500"
                    "0300"));  // class 3
}

}  // namespace
}  // namespace corvath
