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

TEST(DesignEntry, ConvertsAsWellAsItCan) {
  const std::tuple<Entry, double, std::int64_t, bool, std::wstring> cases[] = {
      {Entry(), kNaN, 0, false, L"uninitialized"},
      {Entry(-2.75), -2.75, -2, true, L"-2.75"},
      {Entry(0.1), 0.1, 0, true, L"0.10000000000000001"},
      {Entry(1e300), 1e300, kMax, true, L"1.0000000000000001e+300"},
      {Entry(-HUGE_VAL), -HUGE_VAL, kMin, true, L"-inf"},
      {Entry(kNaN), kNaN, 0, true, L"nan"},
      {Entry(kMin), -0x1p63, kMin, true, L"-9223372036854775808"},
      {Entry(0), 0.0, 0, false, L"0"},
      {Entry(true), 1.0, 1, true, L"1"},
      {Entry(false), 0.0, 0, false, L"0"},
      {Entry(L"1.5e2"), 150.0, 0, false, L"1.5e2"},
      {Entry(L"1"), 1.0, 1, true, L"1"},
      {Entry(L"+12"), 12.0, 12, false, L"+12"},
      {Entry(L"-Infinity"), -HUGE_VAL, 0, false, L"-Infinity"},
      {Entry(L"1e-400"), 0.0, 0, false, L"1e-400"},
      {Entry(L"1e400"), kNaN, 0, false, L"1e400"},
      {Entry(L" 1"), kNaN, 0, false, L" 1"},
      {Entry(L"+-1"), kNaN, 0, false, L"+-1"},
      {Entry(L"0x10"), kNaN, 0, false, L"0x10"},
      {Entry(L""), kNaN, 0, false, L""},
      {Entry(L"\u0661"), kNaN, 0, false, L"\u0661"},
      {Entry(Scalar(-1.5, 2.0)), -1.5, -1, true, L"-1.5"},
  };
  for (const auto& [entry, real, integer, truth, text] : cases) {
    SCOPED_TRACE(testing::Message() << text);
    const double number = entry.ToDouble();
    EXPECT_TRUE(number == real || (std::isnan(number) && std::isnan(real))) << number;
    EXPECT_EQ(entry.ToInteger(), integer);
    EXPECT_EQ(entry.ToBool(), truth);
    EXPECT_EQ(entry.ToString(), text);
  }
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

TEST(DesignEntry, AssignsByTheTypeOfTheTarget) {
  const auto assigned = [](Entry target, const Entry& value, bool parse = false,
                           DesignEntry::eType forced = DesignEntry::UNINITIALIZED) {
    target.Assign(value, parse, forced);
    return target;
  };
  ExpectSame(assigned(Entry(), Entry(L"x")), Entry(L"x"));
  ExpectSame(assigned(Entry(), Entry(2.9), false, DesignEntry::INTEGER), Entry(2));
  ExpectSame(assigned(Entry(5), Entry(2.9), false, DesignEntry::BOOL), Entry(2));
  ExpectSame(assigned(Entry(0.0), Entry(L"2.5"), true), Entry(2.5));
  ExpectSame(assigned(Entry(0.0), Entry(L"x")), Entry(kNaN));
  ExpectSame(assigned(Entry(false), Entry(L"TRUE"), true), Entry(true));
  ExpectSame(assigned(Entry(true), Entry(L"False"), true), Entry(false));
  ExpectSame(assigned(Entry(false), Entry(L"1"), true), Entry(true));
  ExpectSame(assigned(Entry(0), Entry(L"-12"), true), Entry(-12));
  ExpectSame(assigned(Entry(L""), Entry(0.5)), Entry(L"0.5"));
  ExpectSame(assigned(Entry(Scalar(0.0)), Entry(L"3"), true), Entry(Scalar(3.0)));
  ExpectSame(assigned(Entry(Scalar(0.0)), Entry(true)), Entry(Value(true)));

  Entry target(1.0);
  EXPECT_ERROR(std::logic_error, "Cannot assign. Value types do not match.",
               target.Assign(Entry(Vec({1.0, 2.0})), false));
  for (const wchar_t* text : {L"", L"x", L"1,5", L"true"})
    EXPECT_THROW(target.Assign(Entry(text), true), std::bad_cast);
  EXPECT_THROW(Entry(true).Assign(Entry(L"truer"), true), std::bad_cast);
  EXPECT_THROW(Entry(1).Assign(Entry(L"9223372036854775808"), true), std::bad_cast);
  ExpectSame(target, Entry(1.0));  // untouched by all that failed
}

TEST(DesignEntry, EqualityIsNearForNumbersAndExactForOthers) {
  const double above_one = std::nextafter(1.0, 2.0);
  EXPECT_EQ(Entry(1.0), Entry(1.0 + 0x1p-53));
  EXPECT_NE(Entry(1.0), Entry(std::nextafter(above_one, 2.0)));
  EXPECT_EQ(Entry(kNaN), Entry(kNaN));
  EXPECT_EQ(Entry(), Entry());
  EXPECT_EQ(Entry(Value()), Entry(Value()));
  EXPECT_EQ(Entry(), Entry(Value()));
  EXPECT_NE(Entry(), Entry(0.0));
  EXPECT_EQ(Entry(2), Entry(2.0));
  EXPECT_EQ(Entry(true), Entry(1.0));
  EXPECT_NE(Entry(kMax), Entry(kMax - 1));
  EXPECT_NE(Entry(L"1"), Entry(1.0));
  EXPECT_NE(Entry(L"a"), Entry(L"A"));
  EXPECT_EQ(Entry(Vec({1.0, kNaN})), Entry(Vec({1.0, kNaN})));

  EXPECT_TRUE(IsClose(Entry(1.0), Entry(1.0 + 1e-14), 2.2e-14));
  EXPECT_FALSE(IsClose(Entry(1.0), Entry(1.0 + 3e-14), 2.2e-14));
  EXPECT_FALSE(IsClose(Entry(1.0), Entry(kNaN), 2.2e-14));
  EXPECT_FALSE(IsClose(Entry(kNaN), Entry(1.0), 2.2e-14));
}

TEST(DesignEntry, OrdersByValueAndTextsBehindNumbers) {
  EXPECT_LT(Entry(-1.0), Entry(2.0));
  EXPECT_LT(Entry(1), Entry(1.5));
  EXPECT_LT(Entry(false), Entry(true));
  EXPECT_LT(Entry(kMax - 1), Entry(kMax));
  EXPECT_LT(Entry(L"10"), Entry(L"9"));
  EXPECT_LT(Entry(100), Entry(L""));
  EXPECT_LT(Entry(L"z"), Entry(false));  // by alternative, not by type number
  EXPECT_FALSE(Entry() < Entry());
  EXPECT_LT(Entry(Vec({1.0, 2.0})), Entry(Vec({2.0, 3.0})));
  EXPECT_FALSE(Entry(Vec({1.0, 3.0})) < Entry(Vec({2.0, 3.0})));
  EXPECT_MESSAGE("Cannot perform 'BOOLEAN' - 'SCALAR': Incompatible types.",
                 (Entry(true) < Entry(1.0)));
  EXPECT_MESSAGE("Compare operation not allowed for Variants with complex values.",
                 (Entry(Scalar(1.0, 1.0)) < Entry(1.0)));
}

TEST(DesignEntry, SubtractsByType) {
  EXPECT_EQ((Entry(true) - Entry(true)), Entry(false));
  EXPECT_EQ((Entry(true) - Entry(false)).ToBool(), true);
  EXPECT_EQ((Entry(5.0) - Entry(1.5)).GetType(), DesignEntry::REAL);
  EXPECT_EQ((Entry(5) - Entry(7)), Entry(-2));
  EXPECT_EQ((Entry(5) - Entry(1.5)), Entry(Scalar(3.5)));
  EXPECT_EQ((Entry(kMin) - Entry(1)).ToDouble(), -0x1p63 - 1.0);
  EXPECT_EQ((-Entry(kMin)).ToDouble(), 0x1p63);
  EXPECT_TRUE(std::signbit((-Entry(0.0)).ToDouble()));
  EXPECT_EQ(-Entry(Vec({1.0, -2.0})), Entry(Vec({-1.0, 2.0})));
  EXPECT_EQ(Entry(Mat({{1.0, 2.0}})) - Entry(Scalar(1.0, 1.0)),
            Entry(Mat({{{0.0, -1.0}, {1.0, -1.0}}})));
  EXPECT_EQ(Entry(1.0) - Entry(Vec({1.0, 3.0})), Entry(Vec({0.0, -2.0})));

  const Entry row(Mat({{1.0}})), vector(Vec({1.0}));
  const struct {
    Entry a, b;
    const char* refusal;
  } cases[] = {
      {Entry(1.0), Entry(L"1"), "Substraction not supported for strings"},
      {Entry(L"1"), Entry(L"1"), "Substraction not supported for strings"},
      {Entry(true), Entry(1.0), "Invalid type BOOLEAN for operation -."},
      {vector, Entry(Vec({1.0, 2.0})), "Vector dimensions do not match."},
      {row, Entry(Mat({{1.0, 2.0}})), "Matrix dimensions do not match."},
      {row, vector, "Type of second Input object not compatible with first."},
      {Entry(), Entry(1.0), "Input object has invalid datatype for operation -."},
  };
  for (const auto& c : cases) EXPECT_MESSAGE(c.refusal, c.a - c.b);
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
