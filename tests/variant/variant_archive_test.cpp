#include "foundation/math_exception.h"
#include "support/archive_round_trip.h"
#include "support/message_of.h"
#include "support/values.h"

#include <boost/mpl/int.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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

/// What a writer of class version V stores for `value`, field by field; the lies are for damaged
/// files.
template <unsigned int V>
struct Record {
  Value value;
  std::uint64_t size_lie = 0;

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    using boost::serialization::make_nvp;
    auto& control = dynamic_cast<corvath::portable_binary_archive_annotate_control&>(ar);
    if (V >= 5) control.DisableAnnotations();
    const bool has_vector = value.IsVector() || value.HasTimeline();
    const bool has_matrix = value.IsMatrix() || value.HasTimeline();
    std::int32_t kind = value.GetKind();
    bool complex = value.IsComplex();
    bool boolean = value.IsBoolean() && value.GetBoolean();
    bool series = true;
    const bool compact = V >= 6 && !complex;
    ar& make_nvp("kind_", kind);
    if (V < 2) ar& make_nvp("series_", series);
    ar& make_nvp("complex_", complex);
    if (V < 3 || value.IsBoolean()) ar& make_nvp("boolean_", boolean);
    if (V < 3 || value.IsScalar()) {
      // What does not belong to the kind is noise.
      Number number{7, 8};
      if (value.IsScalar()) number = {value.GetScalar().real(), value.GetScalar().imag()};
      if (compact)
        ar& make_nvp("scalar_", number.real);
      else
        ar& make_nvp("scalar_", number);
    }
    if (V < 3 || has_vector) {
      NumberVector vector(has_vector ? value.GetVector().size() : 3);
      if (has_vector)
        for (std::size_t i = 0; i < vector.size(); ++i)
          vector(i) = {value.GetVector()(i).real(), value.GetVector()(i).imag()};
      if (compact) {
        std::uint64_t size = vector.size() + size_lie;
        ar& make_nvp("size", size);
        for (Number& number : vector) ar& make_nvp("item", number.real);
      } else {
        ar& make_nvp("vector_", vector);
      }
    }
    if (V < 3 || has_matrix) {
      NumberMatrix matrix(has_matrix ? value.GetMatrix().size1() : 2,
                          has_matrix ? value.GetMatrix().size2() : 5);
      if (has_matrix)
        for (std::size_t i = 0; i < matrix.size1(); ++i)
          for (std::size_t j = 0; j < matrix.size2(); ++j)
            matrix(i, j) = {value.GetMatrix()(i, j).real(), value.GetMatrix()(i, j).imag()};
      if (compact) {
        std::uint64_t size1 = matrix.size1();
        std::uint64_t size2 = matrix.size2() + size_lie;
        ar& make_nvp("size1", size1) & make_nvp("size2", size2);
        for (Number& number : matrix.data()) ar& make_nvp("item", number.real);
      } else {
        ar& make_nvp("matrix_", matrix);
      }
    }
    bool ordered = value.IsOrdered();
    if (V >= 4) ar& make_nvp("ordered_", ordered);
    if (V >= 5) control.EnableAnnotations();
  }
};

}  // namespace

namespace boost::serialization {
template <unsigned int V>
struct version<Record<V>> : mpl::int_<V> {
  using type = mpl::int_<V>;
};
template <unsigned int V>
struct tracking_level<Record<V>> : mpl::int_<track_always> {
  using type = mpl::int_<track_always>;
};
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

template <unsigned int V>
void ExpectReadable() {
  for (const Value& expected : Samples()) {
    Value read = Vec({5, 4});
    LoadInto(Save(Record<V>{expected}), read);
    EXPECT_EQ(read, expected) << "version " << V;
    EXPECT_EQ(read.IsComplex(), expected.IsComplex()) << "version " << V;
    EXPECT_EQ(read.IsOrdered(), expected.IsOrdered()) << "version " << V;
  }
}

TEST(VariantArchive, ReadsEveryClassVersion) {
  ExpectReadable<0>();
  ExpectReadable<1>();
  ExpectReadable<2>();
  ExpectReadable<3>();
  ExpectReadable<4>();
  ExpectReadable<5>();
  ExpectReadable<6>();
  ExpectReadable<7>();  // a newer writer is not refused
}

TEST(VariantArchive, WritesTheCurrentVersionFieldByField) {
  for (const Value& value : Samples())
    EXPECT_EQ(Save(value), Save(Record<6>{value})) << Text(value);
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
      EXPECT_ANY_THROW(LoadInto(Save(Record<6>{value, lie}), read)) << Text(value);
      EXPECT_EQ(read, original);
    }
  }
  Value gutted = Sig({0, 1}, {{1, 2}});
  Value::Vector timeline;
  gutted.TakeVector(timeline);
  EXPECT_EQ(MessageOfExactly<CDimensionException>([&] { Load<Value>(Save(gutted)); }),
            "Timeline of signal and data-matrix have to be of same dimension.");
}

}  // namespace
}  // namespace corvath::math
