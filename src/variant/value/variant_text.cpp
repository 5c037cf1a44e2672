#include "variant/value/variant.h"

#include <algorithm>
#include <ostream>

namespace corvath::math {

namespace {

constexpr std::streamsize kPrecision = 16;

/// Prints `z` as a number, or as (re,im) where the whole value is complex.
template <class T>
void Print(std::wostream& stream, const std::complex<T>& z, bool complex) {
  if (complex)
    stream << z;
  else
    stream << z.real();
}

template <class T>
void PrintVector(std::wostream& stream, const Variant<T>& v) {
  stream << L" [" << v.Size1() << L"]\n";
  for (const auto& entry : v.GetVector().data()) {
    stream << L' ';
    Print(stream, entry, v.IsComplex());
    stream << L'\n';
  }
}

template <class T>
void PrintMatrix(std::wostream& stream, const Variant<T>& v) {
  const auto& data = v.GetMatrix();
  stream << L" [" << data.size1() << L',' << data.size2() << L"]\n";
  for (std::size_t row = 0; row < data.size1(); ++row) {
    for (std::size_t column = 0; column < data.size2(); ++column) {
      if (column > 0) stream << L'\t';
      Print(stream, data(row, column), v.IsComplex());
    }
    stream << L'\n';
  }
}

/// One line per sample: the abscissa and the channels.
template <class T>
void PrintSignal(std::wostream& stream, const Variant<T>& v) {
  const auto& data = v.GetMatrix();
  stream << L" [" << data.size1() << L',' << data.size2() << L"]\n";
  const std::size_t num_samples = std::min(data.size2(), v.GetVector().size());
  for (std::size_t sample = 0; sample < num_samples; ++sample) {
    stream << v.GetVector()(sample).real();
    for (std::size_t channel = 0; channel < data.size1(); ++channel) {
      stream << L'\t';
      Print(stream, data(channel, sample), v.IsComplex());
    }
    stream << L'\n';
  }
}

}  // namespace

template <class T>
std::wostream& operator<<(std::wostream& stream, const Variant<T>& v) {
  using V = Variant<T>;
  const std::streamsize old_precision = stream.precision(kPrecision);
  std::wstring name;
  v.GetKindName(name);
  stream << name;
  switch (v.GetKind()) {
    case V::UNINITIALIZED:
      stream << L"Uninitialized variant";
      break;
    case V::BOOLEAN:
      stream << v.GetBoolean();
      break;
    case V::SCALAR:
      stream << L'\n' << (v.IsComplex() ? L"Complex " : L"Real ");
      Print(stream, v.GetScalar(), v.IsComplex());
      break;
    case V::VECTOR:
      PrintVector(stream, v);
      break;
    case V::MATRIX:
      PrintMatrix(stream, v);
      break;
    case V::SIGNAL:
    case V::XYDATA:
      PrintSignal(stream, v);
      break;
  }
  stream.precision(old_precision);
  return stream;
}

template std::wostream& operator<<(std::wostream&, const Variant<double>&);

}  // namespace corvath::math
