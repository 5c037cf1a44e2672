#include "design/designs/design_entry.h"

#include "support/stored_form.h"
#include "support/values.h"

#include <boost/serialization/variant.hpp>
#include <boost/variant.hpp>

#include <locale>

namespace {

using Entry = corvath::algorithm::datatypes::CDesignEntry;
using corvath::algorithm::datatypes::UninitializedType;
using corvath::enums::DesignEntry;
using namespace support;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

/// The stored forms of an entry, with Boost's own variant.
struct EntryV5 {
  boost::variant<UninitializedType, double, std::int64_t, std::wstring, bool, Value> data_;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(data_);
  }
};

/// An entry of a class version that stored its kind and then a value, or the value alone.
template <class T>
Entry ReadOld(unsigned version, int which, const T& value) {
  support::StoredForm<Entry> form(4);
  form.Raw("which", which, support::Until(3)).Raw("value", value, support::Until(3));
  form.Raw("data_", value, support::Since(4));
  return form.Read(version);
}

/// Equality of entries is that of numbers; the type counts, too.
void ExpectSame(const Entry& actual, const Entry& expected) {
  EXPECT_EQ(actual.GetType(), expected.GetType());
  EXPECT_EQ(actual, expected);
}

}  // namespace

ZEL_CLASS_VERSION(EntryV5, 5)
ZEL_TRACK_ALWAYS(EntryV5)

// What entries convert to, equal, are less than and leave stands in entries.txt.
TEST(DesignEntry, ConvertsScalarsAlone) {
  EXPECT_EQ(Entry(Value(true)).ToDouble(), 1.0);
  EXPECT_TRUE(Entry(Value(true)).ToBool());
  const std::string not_scalar = "Designpoint conversion failed: variant isn't scalar.";
  for (const Value& value : {Value(), Vec({1.0}), Mat({{1.0}})}) {
    const Entry entry(value);
    EXPECT_MESSAGE(not_scalar, entry.ToDouble());
    EXPECT_MESSAGE(not_scalar, entry.ToInteger());
    EXPECT_MESSAGE(not_scalar, entry.ToBool());
  }
  EXPECT_MESSAGE(not_scalar, Entry(Value(true)).ToString());
}

TEST(DesignEntry, ReadsNumbersWhateverTheHostsLocale) {
  struct Comma : std::numpunct<wchar_t> {
    wchar_t do_decimal_point() const override { return L','; }
    std::string do_grouping() const override { return "\3"; }
    wchar_t do_thousands_sep() const override { return L'.'; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  const double number = Entry(L"1234.5").ToDouble();
  const std::wstring text = Entry(1234.5).ToString();
  std::locale::global(before);
  EXPECT_EQ(number, 1234.5);
  EXPECT_EQ(text, L"1234.5");
}

TEST(DesignEntry, GivesStrictFormsOrRefuses) {
  EXPECT_EQ(Entry(7).GetScalar(), 7.0);
  EXPECT_EQ(Entry(Scalar(2.5)).GetScalar(), 2.5);
  for (const Entry& entry : {Entry(), Entry(true), Entry(L"1"), Entry(Vec({1.0}))})
    EXPECT_ERROR(std::invalid_argument, "GetScalar not supported for this type", entry.GetScalar());
  EXPECT_EQ(Entry(true).GetVariant(), Value(true));
  EXPECT_EQ(Entry(7).GetVariant(), Scalar(7.0));
  EXPECT_TRUE(Entry().GetVariant().IsUninitialized());
  EXPECT_ERROR(std::invalid_argument, "GetVariant is not supported for this type",
               Entry(L"1").GetVariant());
  EXPECT_EQ(Entry(L"1").ToVariant(), Scalar(1.0));

  for (const Value& value : {Value(false), Scalar(1.0), Vec({1.0}), Mat({{1.0}})})
    EXPECT_TRUE(Entry(value).IsScalar());
  for (const Value& value : {Value(), Vec({}), Vec({1.0, 2.0})})
    EXPECT_FALSE(Entry(value).IsScalar());
  EXPECT_TRUE(Entry(L"").IsScalar());
  EXPECT_FALSE(Entry().IsScalar());

  const Entry matrix(Mat({{1.0, 2.0}, {3.0, {4.0, 5.0}}}));
  EXPECT_EQ(matrix.GetElement(1), 2.0);
  EXPECT_EQ(matrix.GetElement(3), 4.0);
  EXPECT_TRUE(std::isnan(matrix.GetElement(4)));
  EXPECT_EQ(Entry(6.0).GetElement(0), 6.0);
  EXPECT_TRUE(std::isnan(Entry(6.0).GetElement(1)));
  EXPECT_TRUE(std::isnan(Entry(Sig({0.0}, {{1.0}})).GetElement(0)));
}

TEST(DesignEntry, StaysWhereATextIsNoNumber) {
  Entry target(1.0);
  for (const wchar_t* text : {L"", L"x", L"1,5", L"true"})
    EXPECT_THROW(target.Assign(Entry(text), true), std::bad_cast);
  EXPECT_THROW(Entry(true).Assign(Entry(L"truer"), true), std::bad_cast);
  EXPECT_THROW(Entry(1).Assign(Entry(L"9223372036854775808"), true), std::bad_cast);
  ExpectSame(target, Entry(1.0));  // untouched by all that failed
}

TEST(DesignEntry, IsCloseWithinATolerance) {
  EXPECT_TRUE(IsClose(Entry(1.0), Entry(1.0 + 1e-14), 2.2e-14));
  EXPECT_FALSE(IsClose(Entry(1.0), Entry(1.0 + 3e-14), 2.2e-14));
  EXPECT_FALSE(IsClose(Entry(1.0), Entry(kNaN), 2.2e-14));
  EXPECT_FALSE(IsClose(Entry(kNaN), Entry(1.0), 2.2e-14));
}

TEST(DesignEntry, NegatesAndLeavesNoInteger) {
  EXPECT_EQ((Entry(kMin) - Entry(1)).ToDouble(), -0x1p63 - 1.0);
  EXPECT_EQ((-Entry(kMin)).ToDouble(), 0x1p63);
  EXPECT_TRUE(std::signbit((-Entry(0.0)).ToDouble()));
  EXPECT_EQ(-Entry(Vec({1.0, -2.0})), Entry(Vec({-1.0, 2.0})));
}

TEST(DesignEntry, IsStoredAsABoostVariant) {
  const std::vector<EntryV5> stored = {{UninitializedType()},          {2.5},  {std::int64_t{-3}},
                                       {std::wstring(L"\u00e4")},      {true}, {Vec({1.0, 2.0})},
                                       {Sig({0.0, 1.0}, {{3.0, 4.0}})}};
  const std::vector<Entry> entries = {Entry(),
                                      Entry(2.5),
                                      Entry(-3),
                                      Entry(L"\u00e4"),
                                      Entry(true),
                                      Entry(Vec({1.0, 2.0})),
                                      Entry(Sig({0.0, 1.0}, {{3.0, 4.0}}))};
  // All in one archive, so that the class records and object ids count too.
  EXPECT_EQ(Save(entries), Save(stored));
  const auto loaded = support::Load<std::vector<Entry>>(Save(stored));
  ASSERT_EQ(loaded.size(), entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) ExpectSame(loaded[i], entries[i]);
}

TEST(DesignEntry, ReadsOlderRecords) {
  ExpectSame(ReadOld(4, 0, Scalar(2.5)), Entry(Scalar(2.5)));
  ExpectSame(ReadOld(3, 1, 2.5), Entry(2.5));
  ExpectSame(ReadOld(1, 3, std::wstring(L"a")), Entry(L"a"));
  ExpectSame(ReadOld(0, 4, true), Entry(true));
  for (const int which : {-1, 5, 6})
    EXPECT_MESSAGE(
        "The file holds a design entry of the unknown kind " + std::to_string(which) + ".",
        ReadOld(3, which, 0.0));
}
