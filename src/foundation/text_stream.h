#pragma once

#include <locale>
#include <sstream>

namespace corvath::utils {

/// A string stream in the classic locale that throws where memory runs out; the standard's cuts its
/// text short there, and nobody is told.
template <class Char>
class BasicTextStream : public std::basic_ostringstream<Char> {
 public:
  BasicTextStream() {
    this->imbue(std::locale::classic());
    this->exceptions(std::ios_base::badbit);
  }
};

using TextStream = BasicTextStream<char>;
using WideTextStream = BasicTextStream<wchar_t>;

}  // namespace corvath::utils
