// Puts expressions from the grammar into texts: operators, literals, ranges, calls of every function
// with a number of arguments that it takes. Every second change is one of bytes, by libFuzzer.

#include "calculator/function_table.h"
#include "foundation/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t capacity);

namespace {

/// A text of the grammar, at most `depth` calls and operators deep.
class Writer {
 public:
  explicit Writer(unsigned int seed) : random_(seed) {}

  std::size_t Below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }

  std::string Expression(int depth) {
    if (depth == 0) return Pick(kLeaves);
    switch (Below(8)) {
      case 0:
        return Pick(kLeaves);
      case 1:
        return Pick(kPrefixes) + Expression(depth - 1);
      case 2:
      case 3:
        return '(' + Expression(depth - 1) + Pick(kOperators) + Expression(depth - 1) + ')';
      case 4:
        return '[' + Expression(depth - 1) + ',' + Expression(depth - 1) + ']';
      case 5:
        return Expression(depth - 1) + '[' + Expression(depth - 1) + ']';
      default:
        return Call(depth);
    }
  }

 private:
  template <std::size_t n>
  std::string Pick(const char* const (&texts)[n]) {
    return texts[Below(n)];
  }

  std::string Call(int depth) {
    const auto& functions = corvath::calculator::FunctionTable::Get().GetFunctions();
    const auto& [name, function] =
        *std::next(functions.begin(), static_cast<std::ptrdiff_t>(Below(functions.size())));
    int count = function.counts[Below(function.counts.size())];
    if (count < 0) count = static_cast<int>(Below(4));
    std::string text = corvath::utils::ToUtf8(name) + '(';
    for (int i = 0; i < count; ++i) text += (i == 0 ? "" : ",") + Expression(depth - 1);
    return text + ')';
  }

  static constexpr const char* kLeaves[] = {"a",       "z",
                                            "t",       "v",
                                            "m",       "S",
                                            "M",       "live",
                                            "0",       "1",
                                            "-1",      "2",
                                            "0.5",     "1e308",
                                            "1e-308",  "3",
                                            "true",    "false",
                                            "pi",      "\"text\"",
                                            "[1,2,3]", "[[1,2],[3,4]]",
                                            "[]",      "nan",
                                            "inf"};
  static constexpr const char* kPrefixes[] = {"-", "+", "!"};
  static constexpr const char* kOperators[] = {"+",  "-",  "*",  "/",  "^",  "<", "<=", ">",
                                               ">=", "==", "!=", "&&", "||", "%", ".*", "./"};
  std::minstd_rand random_;
};

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t capacity, unsigned int seed) {
  Writer writer(seed);
  if (writer.Below(2) == 0) return LLVMFuzzerMutate(data, size, capacity);
  std::string text(reinterpret_cast<const char*>(data), size);
  const std::size_t place = writer.Below(size + 1);
  const std::string fresh = writer.Expression(1 + static_cast<int>(writer.Below(3)));
  if (writer.Below(2) == 0)  // a line of its own
    text.insert(text.find('\n', place) == std::string::npos ? size : text.find('\n', place),
                '\n' + fresh);
  else
    text.replace(place, writer.Below(std::min<std::size_t>(size - place, 20) + 1), fresh);
  if (text.size() > capacity) return LLVMFuzzerMutate(data, size, capacity);
  std::copy(text.begin(), text.end(), data);
  return text.size();
}
