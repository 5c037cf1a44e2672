#include "variant/signals/fourier.h"

#include "foundation/constants.h"
#include "foundation/math_exception.h"
#include "variant/functions/interpolation.h"
#include "variant/operators/entrywise.h"
#include "variant/signals/dft.h"
#include "variant/signals/resampling.h"
#include "variant/signals/timeline.h"

#include <boost/numeric/conversion/cast.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;
using Vector = Value::Vector;
using Matrix = Value::Matrix;

constexpr const char* kTooShort = "Signal must have at least 2 data points.";

enum class Direction { kForward, kBackward };

/// One use of the transform; a status other than zero becomes an exception "name: Step failed
/// (text)". The descriptor lives as long as the object.
class Transform {
 public:
  template <class... Lengths>
  Transform(const char* name, Lengths... lengths) : name_(name) {
    Check(dft::Create(handle_, lengths...), "Creating descriptor");
    const dft::Status status = dft::Commit(handle_);
    if (status != dft::kNoError) dft::Free(handle_);
    Check(status, "Committing descriptor");
  }
  Transform(const Transform&) = delete;
  Transform& operator=(const Transform&) = delete;
  ~Transform() {
    if (handle_ != nullptr) dft::Free(handle_);
  }

  void Compute(Direction direction, Complex* data) {
    if (direction == Direction::kForward)
      Check(dft::Forward(handle_, data), "Forward computing");
    else
      Check(dft::Backward(handle_, data), "Backward computing");
  }
  void Free() { Check(dft::Free(handle_), "Freeing descriptor"); }

 private:
  void Check(dft::Status status, const char* step) const {
    if (status != dft::kNoError)
      throw CComputationException(std::string(name_) + ": " + step + " failed (" +
                                  dft::StatusText(status) + ")");
  }

  const char* name_;
  dft::Descriptor* handle_ = nullptr;
};

void RequireSignal(const Value& signal, const std::string& name) {
  if (!signal.HasTimeline())
    throw CTypeException(name + ": Input object of wrong type. Time signal expected.");
}

/// Both transforms of signals. The phase is the place of the first abscissa.
Value OfSignal(const Value& signal, Direction direction) {
  const char* const name = direction == Direction::kForward ? "fft" : "ifft";
  RequireSignal(signal, name);
  if (signal.GetVector().size() < 2) throw CDimensionException(kTooShort);
  Value source = Ascending(signal);
  if (!IsEquidistant(source))
    throw CTypeException(std::string(name) + ": Equidistant time signal expected.");
  const Vector& t = source.GetVector();
  const std::size_t n = t.size();
  const double first = t(0).real();
  const double last = t(n - 1).real();
  const bool forward = direction == Direction::kForward;
  const double unit = 2.0 * kPi / (forward ? last - first : last);

  Vector axis(n);
  for (std::size_t k = 0; k < n; ++k) axis(k) = static_cast<double>(k) * unit;
  Matrix data;
  source.TakeMatrix(data);
  if (data.size1() > 0) {
    Transform transform(name, n);
    for (std::size_t channel = 0; channel < data.size1(); ++channel)
      transform.Compute(direction, data.data().begin() + channel * n);
    transform.Free();
  }
  for (std::size_t k = 0; k < n && first != 0.0; ++k) {
    const double angle = (forward ? 1.0 : -1.0) * axis(k).real() * first;
    const Complex phase(std::cos(angle), std::sin(angle));
    for (std::size_t channel = 0; channel < data.size1(); ++channel) data(channel, k) *= phase;
  }
  if (!forward)
    for (Complex& entry : data.data()) entry /= static_cast<double>(n);
  Value result = Value::Signal(std::move(axis), std::move(data));
  result.SetKind(signal.GetKind());
  return result;
}

/// Rotates the signal so that abscissa 0 stands behind the n - h negative ones.
/// @param behind  gives h, the number of abscissae from 0 on, of n
template <class Behind>
Value Shifted(const Value& signal, const std::string& name, Behind behind) {
  if (!signal.HasTimeline())
    throw CTypeException(name + ": Input object of wrong type. SIGNAL or XYDATA expected.");
  if (signal.GetVector().size() < 2)
    throw CDimensionException("Invalid signal size. Unable to calculate " + name + ".");
  Value source = Ascending(signal);
  if (source.GetVector()(0) != 0.0)
    throw CDomainException(name + ": Input signal must start at 0.");
  try {
    source = Equidistant(std::move(source), kLinear, 0.0, 0.0);
  } catch (const CVariantException& e) {
    throw CVariantException(name + ": Exception within interpolation occured: " + e.what());
  }

  const std::size_t n = source.GetVector().size();
  const std::size_t h = behind(n);
  const std::size_t r = n - h;
  const double step = source.GetVector()(1).real();
  Vector axis(n);
  for (std::size_t j = 0; j < n; ++j)
    axis(j) = -static_cast<double>(r) * step + static_cast<double>(j) * step;
  const Matrix& data = source.GetMatrix();
  Matrix rotated(data.size1(), n);
  for (std::size_t channel = 0; channel < data.size1(); ++channel) {
    const Complex* const row = data.data().begin() + channel * n;
    std::rotate_copy(row, row + h, row + n, rotated.data().begin() + channel * n);
  }
  Value result = Value::Signal(std::move(axis), std::move(rotated));
  result.SetKind(signal.GetKind());
  return signal.IsFlipped() ? Flip(result) : result;
}

Matrix OfMatrix(const Value& matrix, const std::string& name, Direction direction) {
  if (!matrix.IsMatrix()) throw CTypeException(name + " only defined for MATRIX.");
  Matrix data = matrix.GetMatrix();
  const auto rows = boost::numeric_cast<std::int32_t>(data.size1());
  const auto columns = boost::numeric_cast<std::int32_t>(data.size2());
  Transform transform(name.c_str(), static_cast<std::size_t>(rows),
                      static_cast<std::size_t>(columns));
  transform.Compute(direction, data.data().begin());
  transform.Free();
  return data;
}

}  // namespace

void fft(Value& result, const Value& signal) {
  result = OfSignal(signal, Direction::kForward);
}

void fft(Value& result, const Value& signal, int interpolation, double d0, double d1) {
  RequireSignal(signal, "fft");
  if (signal.GetVector().size() < 2) throw CDimensionException(std::string("fft: ") + kTooShort);
  result = OfSignal(Equidistant(Ascending(signal), interpolation, d0, d1), Direction::kForward);
}

void ifft(Value& result, const Value& signal) {
  result = OfSignal(signal, Direction::kBackward);
}

void ifft(Value& result, const Value& signal, int interpolation, double d0, double d1) {
  RequireSignal(signal, "ifft");
  if (signal.GetVector().size() < 2) throw CDimensionException(kTooShort);
  result = OfSignal(Equidistant(Ascending(signal), interpolation, d0, d1), Direction::kBackward);
}

void fftshift(Value& result, const Value& signal) {
  result = Shifted(signal, "fftshift", [](std::size_t n) { return (n + 1) / 2; });
}

void ifftshift(Value& result, const Value& signal) {
  result = Shifted(signal, "ifftshift", [](std::size_t n) { return n / 2; });
}

void fft2d(Value& result, const Value& matrix) {
  result = Value(OfMatrix(matrix, "fft2d", Direction::kForward));
}

void ifft2d(Value& result, const Value& matrix) {
  Matrix data = OfMatrix(matrix, "ifft2d", Direction::kBackward);
  const double scale = static_cast<double>(data.size1()) * static_cast<double>(data.size2());
  for (Complex& entry : data.data()) entry /= scale;
  result = Value(std::move(data));
}

}  // namespace corvath::math::functions
