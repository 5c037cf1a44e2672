// Opening and solving through the C interface, each beside what it cannot undercut.
//
//   Solve/...        dzel2_solve of 100,000 designs on the sample project
//   SolveBare/...    Approximate of the same models on the same matrix: the baseline, at most 1.2
//   Open/...         opening a project with 100 MB of matrices
//   OpenBare/...     reading its bytes into fresh memory: the baseline, at most 3
//   CallOnOpenPath   a query that has nothing to do: under 2 microseconds
//   CallUnguarded    what that query does, without locks, counts and the frame of a call: at most
//                    50 nanoseconds less
//   SolveOne/...     one design on a project with 10,000 designs and 50 inputs: under 20
//   SolveOneBare/... microseconds beyond its models
//
// Argument of the environment: ZEL_SAMPLE, the path of zel_tenbar.vrdb.

#include "api/call_frame.h"
#include "foundation/text.h"
#include "metamodel/surrogate.h"
#include "project/file/project_file.h"
#include "project/models/surrogate_info_container.h"
#include "scratch_file.h"
#include "solver/zel_solver.h"
#include "wide_project.h"
#include "zelsolver/zelsolver.h"

#include <benchmark/benchmark.h>
#include <boost/unordered_map.hpp>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using corvath::algorithm::datatypes::SaveProjectFile;

const char* SamplePath() {
  const char* path = std::getenv("ZEL_SAMPLE");
  return path == nullptr ? "examples/zel_tenbar.vrdb" : path;
}

void Require(benchmark::State& state, int status) {
  if (status != ZEL_OK) state.SkipWithError(dzel2_getLastError());
}

struct Designs {
  unsigned int n = 0;
  unsigned int m = 0;
  unsigned int outputs = 0;
  Eigen::MatrixXd points;  ///< n x m, inside the bounds
};

Designs MakeDesigns(benchmark::State& state, const char* path, unsigned int n) {
  unsigned int dims[2] = {0, 0};
  Require(state, dzel2_getDimensions(path, ZEL_INPUTS | ZEL_OUTPUTS, dims, 2));
  std::vector<double> bounds(2 * dims[0]);
  Require(state, dzel2_getInputBounds(path, bounds.data()));
  std::mt19937 random(1);
  Designs designs{n, dims[0], dims[1], Eigen::MatrixXd(n, dims[0])};
  for (unsigned int i = 0; i < dims[0]; ++i) {
    std::uniform_real_distribution<double> value(bounds[2 * i], bounds[2 * i + 1]);
    for (unsigned int d = 0; d < n; ++d) designs.points(d, i) = value(random);
  }
  return designs;
}

void Solve(benchmark::State& state, const char* path, unsigned int n) {
  const Designs designs = MakeDesigns(state, path, n);
  std::vector<double> out(static_cast<std::size_t>(n) * designs.outputs);
  for (auto _ : state)
    Require(state, dzel2_solve(path, n, designs.points.data(), n * designs.m, ZEL_SOLVE_RESPONSES,
                               out.data(), n * designs.outputs));
}

void SolveBare(benchmark::State& state, const char* path, unsigned int n) {
  const Designs designs = MakeDesigns(state, path, n);
  const auto solver = corvath::zel::api::ProvideSolver(path, nullptr);
  for (auto _ : state)
    for (const auto& info : solver->GetSurrogateInfos().GetSurrogateInfos()) {
      const Eigen::VectorXd values = info.GetSurrogate()->Approximate(designs.points);
      benchmark::DoNotOptimize(values.data());
    }
}

/// Projects that are written once for all benchmarks of this program.
class Files {
 public:
  static const Files& Get() {
    static const Files files;
    return files;
  }
  std::string matrices;  ///< 54 models of 1000 x 231 coefficients
  std::string designs;   ///< 10,000 designs, 50 inputs

 private:
  Files() {
    matrices = files_[0].Path();
    designs = files_[1].Path();
    SaveProjectFile(bench::MakeWideProject(1000, 20, 54), matrices);
    SaveProjectFile(bench::MakeWideProject(10000, 50, 1), designs);
  }
  bench::ScratchFile files_[2];
};

void BM_Solve(benchmark::State& state) {
  Solve(state, SamplePath(), 100000);
}
void BM_SolveBare(benchmark::State& state) {
  SolveBare(state, SamplePath(), 100000);
}
void BM_SolveOne(benchmark::State& state) {
  Solve(state, Files::Get().designs.c_str(), 1);
}
void BM_SolveOneBare(benchmark::State& state) {
  SolveBare(state, Files::Get().designs.c_str(), 1);
}

void BM_CallOnOpenPath(benchmark::State& state) {
  unsigned int dims = 0;
  for (auto _ : state) Require(state, dzel2_getDimensions(SamplePath(), ZEL_INPUTS, &dims, 1));
}

void BM_CallUnguarded(benchmark::State& state) {
  const auto solver = corvath::zel::api::ProvideSolver(SamplePath(), nullptr);
  using Key = std::pair<std::wstring, bool>;  // as the registry's: a path and how it is opened
  const boost::unordered_map<Key, corvath::zel::ZELSolver*> open{
      {{corvath::utils::FromUtf8(SamplePath()), false}, solver.get()}};
  for (auto _ : state) {
    std::wstring path = corvath::utils::FromUtf8(SamplePath());
    std::replace(path.begin(), path.end(), L'\\', L'/');
    benchmark::DoNotOptimize(open.find({path, false})->second->GetInputNames().size());
  }
}

void BM_Open(benchmark::State& state) {
  const std::string& path = Files::Get().matrices;
  for (auto _ : state) {
    Require(state, dzel2_hasSurrogate(path.c_str()));
    state.PauseTiming();
    dzel2_cleanup();
    state.ResumeTiming();
  }
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  state.counters["file_MB"] = static_cast<double>(file.tellg()) * 1e-6;
  state.SetBytesProcessed(state.iterations() * file.tellg());
}

void BM_OpenBare(benchmark::State& state) {
  const std::string& path = Files::Get().matrices;
  std::int64_t size = 0;
  for (auto _ : state) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    size = file.tellg();
    file.seekg(0);
    const std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(size)]);
    file.read(bytes.get(), size);
    benchmark::DoNotOptimize(bytes.get());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * size);
}

BENCHMARK(BM_Solve)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SolveBare)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CallOnOpenPath)->Unit(benchmark::kNanosecond);
BENCHMARK(BM_CallUnguarded)->Unit(benchmark::kNanosecond);
BENCHMARK(BM_SolveOne)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SolveOneBare)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_OpenBare)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Open)->Unit(benchmark::kMillisecond);

}  // namespace
