#include "calculator/calculator.h"
#include "foundation/text.h"
#include "scratch_file.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

/// read("file") of a table of 50 MB, which may not fall below 100 MB/s, beside a copy of the file's
/// bytes and a loop of strtod over them that keeps the numbers in one array. The value that read
/// gives, a signal of seven channels, takes 80 MB.
namespace {

constexpr std::size_t kSize = 50000000;

/// Rows of eight numbers as "%.9g" writes them; an ascending one first.
const std::string& TableFile() {
  static const bench::ScratchFile file;
  static const std::string path = [] {
    std::string text = "t, x1, x2, x3, x4, x5, x6, x7\n";
    char number[32];
    for (int row = 0; text.size() < kSize; ++row) {
      std::snprintf(number, sizeof number, "%.9g", 1e-4 * row);
      text += number;
      for (int column = 1; column < 8; ++column) {
        std::snprintf(number, sizeof number, ",%.9g", std::exp(std::sin(0.1 * row * column)) - 1);
        text += number;
      }
      text += '\n';
    }
    file.Write(text);
    return file.Path();
  }();
  return path;
}

struct Bytes {
  std::unique_ptr<char[]> data;
  std::size_t size;
};

Bytes ReadBytes() {
  std::FILE* const file = std::fopen(TableFile().c_str(), "rb");
  Bytes bytes{std::unique_ptr<char[]>(new char[kSize + 1024]), 0};
  bytes.size = std::fread(bytes.data.get(), 1, kSize + 1023, file);
  bytes.data[bytes.size] = '\0';
  std::fclose(file);
  return bytes;
}

void CountBytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
}

void BM_Table_Read(benchmark::State& state) {
  const std::wstring text = corvath::utils::FromUtf8("read(\"" + TableFile() + "\")");
  CCalculator calculator;
  for (auto _ : state) {
    const CCalculator::Variant table = calculator.Evaluate(text);
    if (!table.IsSignal()) state.SkipWithError("no signal");
  }
  CountBytes(state);
}

void BM_Table_Bytes(benchmark::State& state) {
  TableFile();
  for (auto _ : state) benchmark::DoNotOptimize(ReadBytes().data.get());
  CountBytes(state);
}

void BM_Table_Strtod(benchmark::State& state) {
  TableFile();
  for (auto _ : state) {
    const Bytes bytes = ReadBytes();
    std::vector<double> numbers;
    const char* at = bytes.data.get();
    const char* const end = at + bytes.size;
    while (at != end && *at != '\n') ++at;  // the header
    while (at != end) {
      char* behind;
      const double number = std::strtod(at, &behind);
      if (behind != at) numbers.push_back(number);
      at = behind == at ? at + 1 : behind;
    }
    benchmark::DoNotOptimize(numbers.data());
  }
  CountBytes(state);
}

BENCHMARK(BM_Table_Read)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Table_Bytes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Table_Strtod)->Unit(benchmark::kMillisecond);

}  // namespace
