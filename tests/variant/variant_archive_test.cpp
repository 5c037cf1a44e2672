#include "foundation/math_exception.h"
#include "support/stored_form.h"
#include "support/values.h"

#include <boost/mpl/int.hpp>

namespace {

using corvath::math::Value;
using namespace support;

/// A complex number with the record of std::complex. uBLAS containers of it are stored by uBLAS's
/// own code, which the value type replaces for std::complex.
struct Number {
  double real = 0;
  double imag = 0;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(real) & BOOST_SERIALIZATION_NVP(imag);
  }
};
using NumberVector = boost::numeric::ublas::vector<Number>;
using NumberMatrix = boost::numeric::ublas::matrix<Number>;

/// What a writer of a class version stores for `value`, field by field. The lie is for damaged files.
support::StoredAs<Value, true> Stored(unsigned version, const Value& value,
                                      std::uint64_t size_lie = 0) {
  // What does not belong to the kind was noise below version 3.
  const bool has_vector = value.IsVector() || value.HasTimeline();
  const bool has_matrix = value.IsMatrix() || value.HasTimeline();
  Number scalar{7, 8};
  NumberVector vector(has_vector ? value.GetVector().size() : 3);
  NumberMatrix matrix(has_matrix ? value.GetMatrix().size1() : 2,
                      has_matrix ? value.GetMatrix().size2() : 5);
  const auto number = [](const Value::Complex& z) { return Number{z.real(), z.imag()}; };
  if (value.IsScalar()) scalar = number(value.GetScalar());
  if (has_vector)
    std::transform(value.GetVector().begin(), value.GetVector().end(), vector.begin(), number);
  if (has_matrix)
    std::transform(value.GetMatrix().data().begin(), value.GetMatrix().data().end(),
                   matrix.data().begin(), number);

  // From version 6 on real values stand without their imaginary parts.
  const Versions all;
  const auto versions = [&](bool belongs) {
    return !belongs ? Until(2) : value.IsComplex() ? all : Until(5);
  };
  const Versions compact = value.IsComplex() ? Since(99) : Since(6);
  const auto held = std::make_shared<StoredForm<Value>>(6);
  StoredForm<Value>& form = *held;
  form.Raw("kind_", std::int32_t{value.GetKind()}).Raw("series_", true, Until(1));
  form.Raw("complex_", value.IsComplex());
  form.Raw("boolean_", value.IsBoolean() && value.GetBoolean(), value.IsBoolean() ? all : Until(2));
  form.Raw("scalar_", scalar, versions(value.IsScalar()));
  if (value.IsScalar()) form.Raw("scalar_", scalar.real, compact);
  form.Raw("vector_", vector, versions(has_vector));
  if (has_vector) {
    form.Raw("size", std::uint64_t{vector.size() + size_lie}, compact);
    for (const Number& item : vector) form.Raw("item", item.real, compact);
  }
  form.Raw("matrix_", matrix, versions(has_matrix));
  if (has_matrix) {
    form.Raw("size1", std::uint64_t{matrix.size1()}, compact);
    form.Raw("size2", std::uint64_t{matrix.size2() + size_lie}, compact);
    for (const Number& item : matrix.data()) form.Raw("item", item.real, compact);
  }
  form.Raw("ordered_", value.IsOrdered(), Since(4));

  auto stored = form.As(version);
  stored.write = [version, held, write = stored.write](corvath::portable_binary_oarchive& ar) {
    corvath::portable_binary_archive_annotate_control& control = ar;
    if (version >= 5) control.DisableAnnotations();
    write(ar);
    if (version >= 5) control.EnableAnnotations();
  };
  return stored;
}

}  // namespace

namespace boost::serialization {
template <>
struct implementation_level<Number> : mpl::int_<object_serializable> {
  using type = mpl::int_<object_serializable>;
};
template <>
struct tracking_level<Number> : mpl::int_<track_never> {
  using type = mpl::int_<track_never>;
};
}  // namespace boost::serialization

namespace corvath::math {
namespace {

const std::vector<Value>& Samples() {
  static const std::vector<Value> samples = {Value(),
                                             Value(true),
                                             Scalar(-2.5),
                                             Scalar(1, 1e300),
                                             Vec({}),
                                             Vec({3, 1, 2}),
                                             Vec({1, {2, -1}}),
                                             Mat({{1, 2, 3}, {4, 5, 6}}),
                                             Mat({{1, {0, 2}}}),
                                             Value(Value::Matrix(0, 4)),
                                             Sig({2, 1, 0}, {{1, 2, 3}, {4, 5, 6}}),
                                             Sig({0, 1}, {{1, {2, 3}}}),
                                             XY({0, 2, 1}, {7, 8, 9}),
                                             XY({0, 1}, {{7, 1}, 8})};
  return samples;
}

TEST(VariantArchive, ReadsEveryClassVersionAndWritesTheCurrentOne) {
  for (const Value& expected : Samples()) {
    for (unsigned version = 0; version <= 7; ++version) {  // a newer writer is not refused
      // A number behind the value shows that all of it was read.
      std::pair<Value, int> both(Vec({5, 4}), 0);
      LoadInto(Save(std::pair(Stored(version, expected), 42)), both);
      const Value& read = both.first;
      EXPECT_EQ(both.second, 42) << "version " << version;
      EXPECT_EQ(read, expected) << "version " << version;
      EXPECT_EQ(read.IsComplex(), expected.IsComplex()) << "version " << version;
      EXPECT_EQ(read.IsOrdered(), expected.IsOrdered()) << "version " << version;
    }
    EXPECT_EQ(Save(expected), Save(Stored(6, expected))) << Text(expected);
  }
}

TEST(VariantArchive, KeepsWhatItCannotDerive) {
  const double nan = std::nan("");
  const Value read = Load<Value>(Save(Vec({nan, {1, nan}})));
  EXPECT_TRUE(std::isnan(read.GetVector()(0).real()));
  EXPECT_TRUE(std::isnan(read.GetVector()(1).imag()));
  // A scalar whose imaginary part is too small to make it complex keeps it.
  EXPECT_EQ(Load<Value>(Save(Scalar(1, 1e-12))), Scalar(1, 1e-12));
  Value unordered = Vec({1, 2});
  unordered.SetOrdered(false);
  EXPECT_FALSE(Load<Value>(Save(unordered)).IsOrdered());
  // More entries than one block of the reader.
  Value::Vector many(10000);
  for (std::size_t i = 0; i < many.size(); ++i) many(i) = std::sqrt(static_cast<double>(i));
  EXPECT_EQ(Load<Value>(Save(Value(many))), Value(many));
}

TEST(VariantArchive, RefusesAbsurdSizesAndKeepsTheOldValue) {
  const Value original = Vec({5, 4});
  for (const Value& value : Samples()) {
    for (const std::uint64_t lie : {std::uint64_t{1} << 40, std::uint64_t{1} << 60,
                                    std::numeric_limits<std::uint64_t>::max() / 2}) {
      if (value.IsComplex() || value.IsScalar() || value.IsBoolean() || value.IsUninitialized())
        continue;
      Value read = original;
      EXPECT_ANY_THROW(LoadInto(Save(Stored(6, value, lie)), read)) << Text(value);
      EXPECT_EQ(read, original);
    }
  }
  Value gutted = Sig({0, 1}, {{1, 2}});
  Value::Vector timeline;
  gutted.TakeVector(timeline);
  EXPECT_ERROR(CDimensionException,
               "Timeline of signal and data-matrix have to be of same dimension.",
               Load<Value>(Save(gutted)));
}

}  // namespace
}  // namespace corvath::math
