#include "literature/published_functions.h"
#include "training/model_competition.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <string>

// The competition for one response of 200 designs and 10 inputs: 40 s in one thread and 500 MB at
// most. Its counters tell where the time goes.

namespace {

using namespace corvath::training;
using Clock = std::chrono::steady_clock;

constexpr Eigen::Index kNumDesigns = 200;

ResponseData MakeData(const std::string& name) {
  const auto& functions = literature::PublishedFunctions();
  const auto function = std::find_if(functions.begin(), functions.end(),
                                     [&](const auto& candidate) { return candidate.name == name; });
  const literature::Sample sample = literature::LatinHypercubeSample(*function, kNumDesigns, 1);
  const TrainSettings settings;
  return MakeResponseData(sample.points, sample.values, settings.num_groups, settings.seed);
}

/// "Isotropic Kriging" of "Isotropic Kriging, Box-Cox, 4 inputs".
std::string FamilyOf(const std::wstring& candidate) {
  const std::size_t end = std::min(candidate.find(L" of order"), candidate.find(L','));
  return std::string(candidate.begin(), candidate.begin() + static_cast<std::ptrdiff_t>(
                                                                std::min(end, candidate.size())));
}

/// Adds the time between two calls to the family that was in work.
class Stopwatch {
 public:
  void Observe(const std::wstring& candidate) {
    Stop();
    family_ = FamilyOf(candidate);
  }
  void Stop() {
    const Clock::time_point now = Clock::now();
    if (!family_.empty()) seconds_[family_] += std::chrono::duration<double>(now - begin_).count();
    begin_ = now;
  }
  const std::map<std::string, double>& GetSeconds() const { return seconds_; }

 private:
  std::string family_;
  Clock::time_point begin_ = Clock::now();
  std::map<std::string, double> seconds_;
};

void Train(benchmark::State& state, const char* function, bool anisotropic) {
  const ResponseData data = MakeData(function);
  TrainSettings settings;
  settings.models.anisotropic_kriging = anisotropic;
  for (auto _ : state) {
    Stopwatch stopwatch;
    const ChosenModel chosen = RunCompetition(
        data, settings, [&](const std::wstring& text, double) { stopwatch.Observe(text); });
    stopwatch.Stop();
    for (const auto& [family, seconds] : stopwatch.GetSeconds()) state.counters[family] = seconds;
    state.counters["candidates"] = static_cast<double>(chosen.tried.size());
    benchmark::DoNotOptimize(chosen.results.CoP);
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak MB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
}
BENCHMARK_CAPTURE(Train, smooth, "Wing weight", false)->Unit(benchmark::kSecond);
BENCHMARK_CAPTURE(Train, noisy, "Friedman 1", false)->Unit(benchmark::kSecond);
BENCHMARK_CAPTURE(Train, anisotropic, "Wing weight", true)->Unit(benchmark::kSecond);

/// The yardstick: one kriging model of all inputs.
void OneKriging(benchmark::State& state) {
  const ResponseData data = MakeData("Wing weight");
  const CandidateForm form{Family::kIsotropicKriging, 0, false, false};
  const auto settings = MakeSettings(form, corvath::math::metamodel::BitVector(10, true), data, {});
  for (auto _ : state) {
    const auto model = MakeModel(*settings, data.points, data.values);
    benchmark::DoNotOptimize(model->BuildOptimal(data.groups));
  }
}
BENCHMARK(OneKriging)->Unit(benchmark::kSecond);

}  // namespace
