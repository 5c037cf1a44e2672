#include "foundation/parallel.h"
#include "kernel_loop_native.h"
#include "literature/uniform_points.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "scratch_file.h"
#include "study/solve/csv_solver.h"
#include "wide_project.h"

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

/// A table of 10^6 designs of 5 inputs, CSV to CSV, by kriging over 192 designs: at most 1.2 times
/// the processor time of a loop written for this table alone. With two threads less time passes.
namespace {

using namespace corvath::math::metamodel;
using corvath::study::CsvSolveRequest;
using corvath::study::Project;

constexpr Eigen::Index kPoints = 192;
constexpr Eigen::Index kInputs = 5;
constexpr Eigen::Index kRows = 1000000;

struct Files {
  bench::ScratchFile in, out;

  Files() {
    std::string text = "x0,x1,x2,x3,x4\n";
    const Eigen::MatrixXd x = literature::UniformPoints(kRows, kInputs, 3);
    char digits[32];
    for (Eigen::Index r = 0; r < kRows; ++r)
      for (Eigen::Index j = 0; j < kInputs; ++j) {
        text.append(digits, std::to_chars(digits, digits + sizeof digits, x(r, j)).ptr);
        text += j + 1 < kInputs ? ',' : '\n';
      }
    in.Write(text);
  }
  static const Files& Get() {
    static const Files files;
    return files;
  }
};

void SolveTable(benchmark::State& state) {
  const Files& files = Files::Get();
  const Eigen::MatrixXd points = literature::UniformPoints(kPoints, kInputs, 1);
  const Eigen::VectorXd values = literature::UniformVector(kPoints, 2);
  OrdinaryKrigingSettings settings(kInputs);
  settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(Eigen::VectorXd::Constant(kInputs, 2.0));
  settings.SetNugget(1e-3);
  const auto model = boost::make_shared<OrdinaryKriging>(points, values, settings);
  if (!model->Build()) std::abort();
  const Project project = Project::FromTraining(bench::MakeProject(points, values, {model}));
  CsvSolveRequest request;
  request.in = files.in.Path();
  request.out = files.out.Path();
  request.extrapolate = true;
  corvath::utils::SetNumThreads(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
    if (corvath::study::SolveCsv(project, request, {}).num_designs != kRows) std::abort();
  corvath::utils::SetNumThreads(0);
}
BENCHMARK(SolveTable)->Arg(1)->Arg(2)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Reads the rows in the order in which they are written, and believes all that it reads.
void SolveTable_Loop(benchmark::State& state) {
  constexpr std::size_t kChunk = 1 << 16;
  constexpr Eigen::Index kBlock = 1024;
  const Files& files = Files::Get();
  const Eigen::MatrixXd points = literature::UniformPoints(kPoints, kInputs, 1);
  const Eigen::VectorXd weights = literature::UniformVector(kPoints, 2);
  const Eigen::VectorXd factors = Eigen::VectorXd::Constant(kInputs, std::log(0.001) / 4.0);
  Eigen::MatrixXd x(kBlock, kInputs);
  Eigen::VectorXd sums(kBlock);
  std::string text;
  std::string result;
  for (auto _ : state) {
    const File in(std::fopen(files.in.Path().c_str(), "rb"), std::fclose);
    const File out(std::fopen(files.out.Path().c_str(), "wb"), std::fclose);
    std::size_t at = 15;  // behind the header
    Eigen::Index row = 0;
    text.clear();
    result = "y\n";
    const auto solve = [&] {
      KernelLoop({points.data(), weights.data(), x.data(), kPoints, kBlock, kInputs, 0.0},
                 factors.data(), sums.data());
      char digits[32];
      for (Eigen::Index r = 0; r < row; ++r) {
        result.append(digits, std::to_chars(digits, digits + sizeof digits, sums(r)).ptr);
        result += '\n';
      }
      std::fwrite(result.data(), 1, result.size(), out.get());
      result.clear();
      row = 0;
    };
    for (std::size_t size = 1; size > 0;) {
      const std::size_t kept = text.size();
      text.resize(kept + kChunk);
      size = std::fread(text.data() + kept, 1, kChunk, in.get());
      text.resize(kept + size);
      while (const void* const found = std::memchr(text.data() + at, '\n', text.size() - at)) {
        const char* const end = static_cast<const char*>(found);
        const char* begin = text.data() + at;
        for (Eigen::Index j = 0; j < kInputs; ++j)
          begin = std::from_chars(begin, end, x(row, j)).ptr + 1;
        at = static_cast<std::size_t>(end + 1 - text.data());
        if (++row == kBlock) solve();
      }
      text.erase(0, at);
      at = 0;
    }
    solve();
  }
}
BENCHMARK(SolveTable_Loop)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

}  // namespace
