#include "design/designs/design_entry.h"

#include "support/message_of.h"
#include "support/stored_form.h"
#include "support/values.h"

#include <boost/serialization/variant.hpp>
#include <boost/variant.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <string>
#include <vector>

namespace {

using corvath::algorithm::datatypes::CDesignEntry;
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
CDesignEntry ReadOld(unsigned version, int which, const T& value) {
  support::StoredForm<CDesignEntry> form(4);
  form.Raw("which", which, support::Until(3));
  form.Raw("value", value, support::Until(3));
  form.Raw("data_", value, support::Since(4));
  return form.Read(version);
}

CDesignEntry Real(double x) {
  return CDesignEntry(x);
}
CDesignEntry Text(const wchar_t* text) {
  return CDesignEntry(text);
}

}  // namespace

ZEL_CLASS_VERSION(EntryV5, 5)
ZEL_TRACK_ALWAYS(EntryV5)

TEST(DesignEntry, NumbersItsTypesApartFromTheStoredAlternatives) {
  const std::pair<CDesignEntry, const wchar_t*> kinds[] = {{CDesignEntry(), L"UNINITIALIZED"},
                                                           {CDesignEntry(true), L"BOOL"},
                                                           {Real(1.0), L"REAL"},
                                                           {CDesignEntry(1), L"INTEGER"},
                                                           {Text(L"1"), L"STRING"},
                                                           {CDesignEntry(Scalar(1.0)), L"VARIANT"}};
  for (int i = 0; i < 6; ++i) {
    const auto type = static_cast<DesignEntry::eType>(i);
    EXPECT_EQ(kinds[i].first.GetType(), type);
    EXPECT_EQ(DesignEntry::GetText(type), kinds[i].second);
    EXPECT_EQ(DesignEntry::GetType(kinds[i].second), type);
  }
  const auto unknown = [](int n) {
    return support::MessageOfExactly<std::invalid_argument>(
        [n] { DesignEntry::GetText(static_cast<DesignEntry::eType>(n)); });
  };
  EXPECT_EQ(unknown(6), "Unknown design type");
  EXPECT_EQ(unknown(-1), "Unknown design type");
}

TEST(DesignEntry, ConvertsAsWellAsItCan) {
  struct Case {
    CDesignEntry entry;
    double real;
    std::int64_t integer;
    bool truth;
    std::wstring text;
  };
  const std::vector<Case> cases = {
      {CDesignEntry(), kNaN, 0, false, L"uninitialized"},
      {Real(-2.75), -2.75, -2, true, L"-2.75"},
      {Real(0.1), 0.1, 0, true, L"0.10000000000000001"},
      {Real(1e300), 1e300, kMax, true, L"1.0000000000000001e+300"},
      {Real(-HUGE_VAL), -HUGE_VAL, kMin, true, L"-inf"},
      {Real(kNaN), kNaN, 0, true, L"nan"},
      {CDesignEntry(kMin), -0x1p63, kMin, true, L"-9223372036854775808"},
      {CDesignEntry(0), 0.0, 0, false, L"0"},
      {CDesignEntry(true), 1.0, 1, true, L"1"},
      {CDesignEntry(false), 0.0, 0, false, L"0"},
      {Text(L"1.5e2"), 150.0, 0, false, L"1.5e2"},
      {Text(L"1"), 1.0, 1, true, L"1"},
      {Text(L"+12"), 12.0, 12, false, L"+12"},
      {Text(L"-Infinity"), -HUGE_VAL, 0, false, L"-Infinity"},
      {Text(L"1e-400"), 0.0, 0, false, L"1e-400"},
      {Text(L"1e400"), kNaN, 0, false, L"1e400"},
      {Text(L" 1"), kNaN, 0, false, L" 1"},
      {Text(L"+-1"), kNaN, 0, false, L"+-1"},
      {Text(L"0x10"), kNaN, 0, false, L"0x10"},
      {Text(L""), kNaN, 0, false, L""},
      {Text(L"\u0661"), kNaN, 0, false, L"\u0661"},
      {CDesignEntry(Scalar(-1.5, 2.0)), -1.5, -1, true, L"-1.5"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.entry.ToString());
    const double real = c.entry.ToDouble();
    EXPECT_TRUE(real == c.real || (std::isnan(real) && std::isnan(c.real))) << real;
    EXPECT_EQ(c.entry.ToInteger(), c.integer);
    EXPECT_EQ(c.entry.ToBool(), c.truth);
    EXPECT_EQ(c.entry.ToString(), c.text);
  }
  EXPECT_EQ(CDesignEntry(Value(true)).ToDouble(), 1.0);
  EXPECT_TRUE(CDesignEntry(Value(true)).ToBool());
  const std::string not_scalar = "Designpoint conversion failed: variant isn't scalar.";
  for (const Value& value : {Value(), Vec({1.0}), Mat({{1.0}})}) {
    const CDesignEntry entry(value);
    EXPECT_EQ(MessageOf([&] { entry.ToDouble(); }), not_scalar);
    EXPECT_EQ(MessageOf([&] { entry.ToInteger(); }), not_scalar);
    EXPECT_EQ(MessageOf([&] { entry.ToBool(); }), not_scalar);
  }
  EXPECT_EQ(MessageOf([] { CDesignEntry(Value(true)).ToString(); }), not_scalar);
}

TEST(DesignEntry, ReadsNumbersWhateverTheHostsLocale) {
  struct Comma : std::numpunct<wchar_t> {
    wchar_t do_decimal_point() const override { return L','; }
    std::string do_grouping() const override { return "\3"; }
    wchar_t do_thousands_sep() const override { return L'.'; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  const double number = Text(L"1234.5").ToDouble();
  const std::wstring text = Real(1234.5).ToString();
  std::locale::global(before);
  EXPECT_EQ(number, 1234.5);
  EXPECT_EQ(text, L"1234.5");
}

TEST(DesignEntry, GivesStrictFormsOrRefuses) {
  EXPECT_EQ(CDesignEntry(7).GetScalar(), 7.0);
  EXPECT_EQ(CDesignEntry(Scalar(2.5)).GetScalar(), 2.5);
  for (const CDesignEntry& entry :
       {CDesignEntry(), CDesignEntry(true), Text(L"1"), CDesignEntry(Vec({1.0}))})
    EXPECT_EQ(support::MessageOfExactly<std::invalid_argument>([&] { entry.GetScalar(); }),
              "GetScalar not supported for this type");
  EXPECT_EQ(CDesignEntry(true).GetVariant(), Value(true));
  EXPECT_EQ(CDesignEntry(7).GetVariant(), Scalar(7.0));
  EXPECT_TRUE(CDesignEntry().GetVariant().IsUninitialized());
  EXPECT_EQ(support::MessageOfExactly<std::invalid_argument>([] { Text(L"1").GetVariant(); }),
            "GetVariant is not supported for this type");
  EXPECT_EQ(Text(L"1").ToVariant(), Scalar(1.0));

  for (const Value& value : {Value(false), Scalar(1.0), Vec({1.0}), Mat({{1.0}})})
    EXPECT_TRUE(CDesignEntry(value).IsScalar());
  for (const Value& value : {Value(), Vec({}), Vec({1.0, 2.0})})
    EXPECT_FALSE(CDesignEntry(value).IsScalar());
  EXPECT_TRUE(Text(L"").IsScalar());
  EXPECT_FALSE(CDesignEntry().IsScalar());

  const CDesignEntry matrix(Mat({{1.0, 2.0}, {3.0, {4.0, 5.0}}}));
  EXPECT_EQ(matrix.GetElement(1), 2.0);
  EXPECT_EQ(matrix.GetElement(3), 4.0);
  EXPECT_TRUE(std::isnan(matrix.GetElement(4)));
  EXPECT_EQ(Real(6.0).GetElement(0), 6.0);
  EXPECT_TRUE(std::isnan(Real(6.0).GetElement(1)));
  EXPECT_TRUE(std::isnan(CDesignEntry(Sig({0.0}, {{1.0}})).GetElement(0)));
}

TEST(DesignEntry, AssignsByTheTypeOfTheTarget) {
  const auto assigned = [](CDesignEntry target, const CDesignEntry& value, bool parse = false,
                           DesignEntry::eType forced = DesignEntry::UNINITIALIZED) {
    target.Assign(value, parse, forced);
    return target;
  };
  const auto expect = [](const CDesignEntry& actual, const CDesignEntry& expected) {
    EXPECT_EQ(actual.GetType(), expected.GetType());
    EXPECT_EQ(actual, expected);
  };
  expect(assigned(CDesignEntry(), Text(L"x")), Text(L"x"));
  expect(assigned(CDesignEntry(), Real(2.9), false, DesignEntry::INTEGER), CDesignEntry(2));
  expect(assigned(CDesignEntry(5), Real(2.9), false, DesignEntry::BOOL), CDesignEntry(2));
  expect(assigned(Real(0.0), Text(L"2.5"), true), Real(2.5));
  expect(assigned(Real(0.0), Text(L"x")), Real(kNaN));
  expect(assigned(CDesignEntry(false), Text(L"TRUE"), true), CDesignEntry(true));
  expect(assigned(CDesignEntry(true), Text(L"False"), true), CDesignEntry(false));
  expect(assigned(CDesignEntry(false), Text(L"1"), true), CDesignEntry(true));
  expect(assigned(CDesignEntry(0), Text(L"-12"), true), CDesignEntry(-12));
  expect(assigned(Text(L""), Real(0.5)), Text(L"0.5"));
  expect(assigned(CDesignEntry(Scalar(0.0)), Text(L"3"), true), CDesignEntry(Scalar(3.0)));
  expect(assigned(CDesignEntry(Scalar(0.0)), CDesignEntry(true)), CDesignEntry(Value(true)));

  CDesignEntry target(1.0);
  EXPECT_EQ(support::MessageOfExactly<std::logic_error>([&] {
              target.Assign(CDesignEntry(Vec({1.0, 2.0})), false);
            }),
            "Cannot assign. Value types do not match.");
  for (const wchar_t* text : {L"", L"x", L"1,5", L"true"})
    EXPECT_THROW(target.Assign(Text(text), true), std::bad_cast);
  EXPECT_THROW(CDesignEntry(true).Assign(Text(L"truer"), true), std::bad_cast);
  EXPECT_THROW(CDesignEntry(1).Assign(Text(L"9223372036854775808"), true), std::bad_cast);
  expect(target, Real(1.0));  // untouched by all that failed
}

TEST(DesignEntry, EqualityIsNearForNumbersAndExactForOthers) {
  const double above_one = std::nextafter(1.0, 2.0);
  EXPECT_EQ(Real(1.0), Real(1.0 + 0x1p-53));
  EXPECT_NE(Real(1.0), Real(std::nextafter(above_one, 2.0)));
  EXPECT_EQ(Real(kNaN), Real(kNaN));
  EXPECT_EQ(CDesignEntry(), CDesignEntry());
  EXPECT_EQ(CDesignEntry(Value()), CDesignEntry(Value()));
  EXPECT_EQ(CDesignEntry(), CDesignEntry(Value()));
  EXPECT_NE(CDesignEntry(), Real(0.0));
  EXPECT_EQ(CDesignEntry(2), Real(2.0));
  EXPECT_EQ(CDesignEntry(true), Real(1.0));
  EXPECT_NE(CDesignEntry(kMax), CDesignEntry(kMax - 1));
  EXPECT_NE(Text(L"1"), Real(1.0));
  EXPECT_NE(Text(L"a"), Text(L"A"));
  EXPECT_EQ(CDesignEntry(Vec({1.0, kNaN})), CDesignEntry(Vec({1.0, kNaN})));

  EXPECT_TRUE(IsClose(Real(1.0), Real(1.0 + 1e-14), 2.2e-14));
  EXPECT_FALSE(IsClose(Real(1.0), Real(1.0 + 3e-14), 2.2e-14));
  EXPECT_FALSE(IsClose(Real(1.0), Real(kNaN), 2.2e-14));
  EXPECT_FALSE(IsClose(Real(kNaN), Real(1.0), 2.2e-14));
}

TEST(DesignEntry, OrdersByValueAndTextsBehindNumbers) {
  EXPECT_LT(Real(-1.0), Real(2.0));
  EXPECT_LT(CDesignEntry(1), Real(1.5));
  EXPECT_LT(CDesignEntry(false), CDesignEntry(true));
  EXPECT_LT(CDesignEntry(kMax - 1), CDesignEntry(kMax));
  EXPECT_LT(Text(L"10"), Text(L"9"));
  EXPECT_LT(CDesignEntry(100), Text(L""));
  EXPECT_LT(Text(L"z"), CDesignEntry(false));  // by alternative, not by type number
  EXPECT_FALSE(CDesignEntry() < CDesignEntry());
  EXPECT_LT(CDesignEntry(Vec({1.0, 2.0})), CDesignEntry(Vec({2.0, 3.0})));
  EXPECT_FALSE(CDesignEntry(Vec({1.0, 3.0})) < CDesignEntry(Vec({2.0, 3.0})));
  EXPECT_EQ(MessageOf([] { (void)(CDesignEntry(true) < Real(1.0)); }),
            "Cannot perform 'BOOLEAN' - 'SCALAR': Incompatible types.");
  EXPECT_EQ(MessageOf([] { (void)(CDesignEntry(Scalar(1.0, 1.0)) < Real(1.0)); }),
            "Compare operation not allowed for Variants with complex values.");
}

TEST(DesignEntry, SubtractsByType) {
  EXPECT_EQ((CDesignEntry(true) - CDesignEntry(true)), CDesignEntry(false));
  EXPECT_EQ((CDesignEntry(true) - CDesignEntry(false)).ToBool(), true);
  EXPECT_EQ((Real(5.0) - Real(1.5)).GetType(), DesignEntry::REAL);
  EXPECT_EQ((CDesignEntry(5) - CDesignEntry(7)), CDesignEntry(-2));
  EXPECT_EQ((CDesignEntry(5) - Real(1.5)), CDesignEntry(Scalar(3.5)));
  EXPECT_EQ((CDesignEntry(kMin) - CDesignEntry(1)).ToDouble(), -0x1p63 - 1.0);
  EXPECT_EQ((-CDesignEntry(kMin)).ToDouble(), 0x1p63);
  EXPECT_TRUE(std::signbit((-Real(0.0)).ToDouble()));
  EXPECT_EQ(-CDesignEntry(Vec({1.0, -2.0})), CDesignEntry(Vec({-1.0, 2.0})));
  EXPECT_EQ(CDesignEntry(Mat({{1.0, 2.0}})) - CDesignEntry(Scalar(1.0, 1.0)),
            CDesignEntry(Mat({{{0.0, -1.0}, {1.0, -1.0}}})));
  EXPECT_EQ(Real(1.0) - CDesignEntry(Vec({1.0, 3.0})), CDesignEntry(Vec({0.0, -2.0})));

  const CDesignEntry row(Mat({{1.0}})), vector(Vec({1.0}));
  const struct {
    CDesignEntry a, b;
    const char* refusal;
  } cases[] = {
      {Real(1.0), Text(L"1"), "Substraction not supported for strings"},
      {Text(L"1"), Text(L"1"), "Substraction not supported for strings"},
      {CDesignEntry(true), Real(1.0), "Invalid type BOOLEAN for operation -."},
      {vector, CDesignEntry(Vec({1.0, 2.0})), "Vector dimensions do not match."},
      {row, CDesignEntry(Mat({{1.0, 2.0}})), "Matrix dimensions do not match."},
      {row, vector, "Type of second Input object not compatible with first."},
      {CDesignEntry(), Real(1.0), "Input object has invalid datatype for operation -."},
  };
  for (const auto& c : cases) EXPECT_EQ(MessageOf([&] { c.a - c.b; }), c.refusal);
}

TEST(DesignEntry, IsStoredAsABoostVariant) {
  const std::vector<EntryV5> stored = {{UninitializedType()},          {2.5},  {std::int64_t{-3}},
                                       {std::wstring(L"\u00e4")},      {true}, {Vec({1.0, 2.0})},
                                       {Sig({0.0, 1.0}, {{3.0, 4.0}})}};
  const std::vector<CDesignEntry> entries = {CDesignEntry(),
                                             Real(2.5),
                                             CDesignEntry(-3),
                                             Text(L"\u00e4"),
                                             CDesignEntry(true),
                                             CDesignEntry(Vec({1.0, 2.0})),
                                             CDesignEntry(Sig({0.0, 1.0}, {{3.0, 4.0}}))};
  // All in one archive, so that the class records and object ids count too.
  EXPECT_EQ(support::Save(entries), support::Save(stored));
  const auto loaded = support::Load<std::vector<CDesignEntry>>(support::Save(stored));
  ASSERT_EQ(loaded.size(), entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(loaded[i].GetType(), entries[i].GetType());
    EXPECT_EQ(loaded[i], entries[i]);
  }
}

TEST(DesignEntry, ReadsOlderRecords) {
  const std::pair<CDesignEntry, CDesignEntry> cases[] = {
      {ReadOld(4, 0, Scalar(2.5)), CDesignEntry(Scalar(2.5))},
      {ReadOld(3, 1, 2.5), Real(2.5)},
      {ReadOld(1, 3, std::wstring(L"a")), Text(L"a")},
      {ReadOld(0, 4, true), CDesignEntry(true)}};
  for (const auto& [read, expected] : cases) {
    EXPECT_EQ(read.GetType(), expected.GetType());
    EXPECT_EQ(read, expected);
  }
  for (const int which : {-1, 5, 6})
    EXPECT_EQ(MessageOf([&] { ReadOld(3, which, 0.0); }),
              "The file holds a design entry of the unknown kind " + std::to_string(which) + ".");
}
