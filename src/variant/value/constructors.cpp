#include "variant/value/constructors.h"

#include "variant/operators/entrywise.h"
#include "variant/value/limits.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;
using Vector = Value::Vector;
using Matrix = Value::Matrix;

Vector CopyRow(const Matrix& m, std::size_t row) {
  Vector entries(m.size2());
  std::copy_n(m.data().begin() + row * m.size2(), m.size2(), entries.begin());
  return entries;
}

/// Ascending by real part; a NaN is greater than any number, so that the order is strict.
bool IsBefore(const Complex& a, const Complex& b) {
  if (std::isnan(b.real())) return !std::isnan(a.real());
  return a.real() < b.real();
}

/// Row `number` of a MATRIX, or of a signal with its timeline as row 0.
Vector ExtractRow(const Value& x, double number) {
  const std::size_t num_rows = x.GetMatrix().size1() + (x.HasTimeline() ? 1 : 0);
  const double shifted = number + 0.5;
  if (!(shifted >= 0.0 && shifted < static_cast<double>(num_rows)))
    throw CDomainException("This row index doesn't exist in this matrix. \n");
  const auto row = static_cast<std::size_t>(shifted);
  if (x.IsMatrix()) return CopyRow(x.GetMatrix(), row);
  return row == 0 ? x.GetVector() : CopyRow(x.GetMatrix(), row - 1);
}

Value SortSignal(const Value& x) {
  const Vector& t = x.GetVector();
  const Matrix& data = x.GetMatrix();
  std::vector<std::size_t> order(t.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&t](std::size_t a, std::size_t b) { return IsBefore(t(a), t(b)); });
  Vector timeline(t.size());
  Matrix sorted(data.size1(), data.size2());
  for (std::size_t i = 0; i < order.size(); ++i) {
    timeline(i) = t(order[i]);
    for (std::size_t channel = 0; channel < data.size1(); ++channel)
      sorted(channel, i) = data(channel, order[i]);
  }
  Value result;
  result.SetKind(x.GetKind());
  result.SetVector(timeline);
  result.SetMatrix(sorted);
  return result;
}

}  // namespace

void signal(Value& result, const std::vector<Value>& arguments) {
  if (arguments.empty())
    throw CTypeException("First object of wrong type. VECTOR or SIGNAL expected.");
  const Value& first = arguments.front();
  if (arguments.size() == 1 && !first.HasTimeline())
    throw CTypeException("Input object of unsupported type " + first.GetKindName());
  if (!first.IsVector() && !first.HasTimeline())
    throw CTypeException("First object of wrong type. VECTOR or SIGNAL expected.");

  Value built = first;
  if (first.IsVector() && first.Size() > 0)
    built = Value::Signal(first.GetVector(), Matrix(0, first.Size()));
  else
    built.SetKind(Value::SIGNAL);
  const std::size_t num_samples =
      built.GetMatrix().size1() > 0 ? built.GetMatrix().size2() : built.GetVector().size();
  std::size_t num_rows = 0;
  bool complex = built.IsComplex();
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const Value& channel = arguments[i];
    if (!channel.IsVector() && !channel.HasTimeline())
      throw CTypeException("At least one input object of unsupported type " +
                           channel.GetKindName());
    if ((channel.IsVector() ? channel.Size() : channel.GetMatrix().size2()) != num_samples)
      throw CDimensionException("addChannels: dimensions do not match.");
    num_rows += channel.IsVector() ? 1 : channel.Size1();
    complex = complex || channel.IsComplex();
  }
  if (num_rows > 0) {
    Matrix rows(num_rows, num_samples);
    auto out = rows.data().begin();  // row by row
    for (std::size_t i = 1; i < arguments.size(); ++i) {
      const Value& channel = arguments[i];
      out = channel.IsVector()
                ? std::copy(channel.GetVector().begin(), channel.GetVector().end(), out)
                : std::copy(channel.GetMatrix().data().begin(), channel.GetMatrix().data().end(),
                            out);
    }
    built.addChannels(Value(std::move(rows)));
    built.SetComplex(complex);
  }
  result = built.GetVector().size() > 0 ? std::move(built) : Value();
}

void xydata(Value& result, const Value& x, const Value& y) {
  if (!x.IsVector() || !y.IsVector())
    throw CTypeException("xydata: Input objects have invalid datatype. Type VECTOR expected.");
  if (x.Size() != y.Size()) throw CDimensionException("xydata: Dimensions do not match!");
  result = Value::XYData(x.GetVector(), y.GetVector());
}

void xydata(Value& result, const Value& x) {
  const char* const wrong_channels = "xydata: Wrong number of channels for xy-data!";
  switch (x.GetKind()) {
    case Value::MATRIX:
      if (x.Size1() != 2) throw CDimensionException(wrong_channels);
      result = Value::XYData(CopyRow(x.GetMatrix(), 0), CopyRow(x.GetMatrix(), 1));
      break;
    case Value::SIGNAL: {
      if (x.Size1() != 1) throw CDimensionException(wrong_channels);
      Value copy = x;
      copy.SetKind(Value::XYDATA);
      result = std::move(copy);
      break;
    }
    case Value::XYDATA:
      result = x;
      break;
    default:
      throw CTypeException(
          "xydata: Input object has invalid datatype. Type MATRIX or SIGNAL expected.");
  }
}

void linspace(Value& result, double first, double last, std::uint64_t count) {
  if (!(first <= last))
    throw CDomainException("linspace: First value must be smaller than last value.");
  if (count < 2) throw CDomainException("linspace: Output must contain at least 2 elements.");
  CheckEntries(count, 1);
  const double step = (last - first) / static_cast<double>(count - 1);
  Vector numbers(count);
  double number = first;
  for (Complex& entry : numbers) {
    entry = number;
    number += step;
  }
  result = Value(std::move(numbers));
}

void extract(Value& result, const Value& x, const Value& index) {
  if (!x.IsMatrix() && !x.HasTimeline())
    throw CTypeException("Input object of invalid type. MATRIX, XYDATA or SIGNAL expected.");
  if (index.IsScalar()) {
    result = Value(ExtractRow(x, index.GetScalar().real()));
    return;
  }
  if (!index.IsVector()) throw CTypeException(entrywise::kInvalidKind);
  CheckEntries(index.Size(), x.Size2());
  Matrix rows(index.Size(), x.Size2());
  for (std::size_t i = 0; i < rows.size1(); ++i) {
    const Vector row = ExtractRow(x, index.GetVector()(i).real());
    std::copy(row.begin(), row.end(), rows.data().begin() + i * rows.size2());
  }
  result = Value(std::move(rows));
}

void sort(Value& result, const Value& x) {
  switch (x.GetKind()) {
    case Value::BOOLEAN:
    case Value::SCALAR:
      result = x;
      break;
    case Value::VECTOR: {
      if (x.IsComplex())
        throw CTypeException("Sort operation not defined for vector of type complex");
      Vector sorted(x.GetVector());
      std::sort(sorted.data().begin(), sorted.data().end(), IsBefore);
      result = Value(std::move(sorted));
      break;
    }
    case Value::MATRIX:
      throw CTypeException("Sort operation not defined for matrix type");
    case Value::SIGNAL:
    case Value::XYDATA:
      result = SortSignal(x);
      break;
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

}  // namespace corvath::math::functions
