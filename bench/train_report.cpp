// How well training chooses and how honest it is, on functions of the literature:
//
//     train_report [DESIGNS [SEEDS]]
//
// For each function: the chosen model, its CoP beside 1 - SSE/SST on 2000 fresh points, what models
// chosen anew without each group predict where that was asked, its root mean square error there
// beside that of the best candidate in hindsight, and the time. An asterisk
// marks a difference of 0.05 or more, and a ratio above 1.25.

#include "literature/hindsight.h"
#include "literature/published_functions.h"
#include "training/model_competition.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace corvath::training;

struct Counts {
  int honest = 0;
  int well_chosen = 0;
  int all = 0;
};

void Report(const literature::PublishedFunction& function, Eigen::Index n, std::uint32_t seed,
            Counts& counts) {
  const TrainSettings settings;
  const literature::Sample sample = literature::LatinHypercubeSample(function, n, seed);
  const ResponseData data =
      MakeResponseData(sample.points, sample.values, settings.num_groups, settings.seed);
  const auto begin = std::chrono::steady_clock::now();
  const ChosenModel chosen = RunCompetition(data, settings, [](const std::wstring&, double) {});
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  const literature::Hindsight hindsight = literature::LookBack(function, chosen, data, seed + 1000);
  const double difference = chosen.GetCoP() - hindsight.determination;
  ++counts.all;
  counts.honest += literature::IsHonest(difference);
  counts.well_chosen += literature::IsWellChosen(hindsight.ratio);
  std::printf("%-13s %3lld %5.3g %5zu  %-57ls %3llu  %6.4f %6.4f %+7.4f%c %6.3f  %5.2f%c %6.2f s\n",
              function.name.c_str(), static_cast<long long>(sample.points.cols()), function.noise,
              chosen.tried.size(), chosen.text.c_str(),
              static_cast<unsigned long long>(
                  corvath::math::metamodel::CountBits(chosen.model->GetVariableSelection())),
              chosen.GetCoP(), hindsight.determination, difference,
              literature::IsHonest(difference) ? ' ' : '*', chosen.GetRawCoP(), hindsight.ratio,
              literature::IsWellChosen(hindsight.ratio) ? ' ' : '*', time.count());
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const Eigen::Index n = argc > 1 ? std::atol(argv[1]) : 100;
  const long num_seeds = argc > 2 ? std::atol(argv[2]) : 1;
  Counts counts;
  std::printf(
      "function      inputs noise tried  %-57s uses     CoP  fresh    diff.     raw  ratio     "
      "time\n",
      "model");
  for (long seed = 1; seed <= num_seeds; ++seed)
    for (const literature::PublishedFunction& function : literature::PublishedFunctions())
      Report(function, n, static_cast<std::uint32_t>(seed), counts);
  std::printf(
      "Of %d: CoP within 0.05 of the share explained on fresh points: %d; error within 1.25 "
      "times that of the best candidate: %d\n",
      counts.all, counts.honest, counts.well_chosen);
  return 0;
}
