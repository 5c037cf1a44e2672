// How well training chooses and how honest it is, on functions of the literature:
//
//     train_report [designs] [seeds]
//
// For each function: the chosen model, its CoP beside 1 - SSE/SST on 2000 fresh points, its root
// mean square error there beside that of the best candidate, and the time.

#include "support/published_functions.h"
#include "training/model_competition.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace corvath::training;

constexpr Eigen::Index kFresh = 2000;
constexpr double kLargestRatio = 1.25;
constexpr double kLargestDifference = 0.05;

struct Line {
  double cop, fresh, ratio, seconds;
  std::size_t num_candidates;
};

/// The smallest error on fresh points that any candidate has, found by building all again.
double BestError(const ChosenModel& chosen, const ResponseData& data, const support::Sample& fresh,
                 std::string* name) {
  double best = HUGE_VAL;
  for (const auto& tried : chosen.tried) {
    const auto model = MakeModel(*tried.settings, data.points, data.values);
    if (!model->Build()) continue;
    const double error = (model->Approximate(fresh.points) - fresh.values).norm();
    if (error < best) {
      best = error;
      const auto wide = model->GetName(false);
      *name = std::string(wide.begin(), wide.end()) +
              (tried.settings->HasBoxCoxParameter() ? " BC" : "") + " CoP " +
              std::to_string(tried.CoP) + " in " +
              std::to_string(corvath::math::metamodel::CountBits(model->GetVariableSelection()));
    }
  }
  return best;
}

Line Report(const support::PublishedFunction& function, Eigen::Index n, std::uint32_t seed) {
  const support::Sample sample = support::LatinHypercubeSample(function, n, seed);
  const support::Sample fresh = support::UniformSample(function, kFresh, seed + 1000);
  TrainSettings settings;
  if (std::getenv("NGROUPS"))
    settings.num_groups = static_cast<std::uint32_t>(std::atoi(std::getenv("NGROUPS")));
  const ResponseData data =
      MakeResponseData(sample.points, sample.values, settings.num_groups, settings.seed);
  const auto begin = std::chrono::steady_clock::now();
  const ChosenModel chosen = RunCompetition(data, settings, [](const std::wstring&, double) {});
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  const Eigen::VectorXd predicted = chosen.model->Approximate(fresh.points);
  Line line;
  line.cop = chosen.results.CoP;
  line.fresh = Determination(fresh.values, predicted);
  std::string best_name;
  const double exact = 1e-9 * fresh.values.norm();
  line.ratio = ((predicted - fresh.values).norm() + exact) /
               (BestError(chosen, data, fresh, &best_name) + exact);
  line.seconds = time.count();
  line.num_candidates = chosen.tried.size();
  const auto num_inputs = corvath::math::metamodel::CountBits(chosen.model->GetVariableSelection());
  std::printf("%-14s %2lld %4zu  %-52ls %2llu  %6.4f  %6.4f %+7.4f%s  %5.2f%s  %6.2f s  | %s\n",
              function.name.c_str(), static_cast<long long>(sample.points.cols()),
              line.num_candidates, chosen.text.c_str(), static_cast<unsigned long long>(num_inputs),
              line.cop, line.fresh, line.cop - line.fresh,
              std::abs(line.cop - line.fresh) < kLargestDifference ? " " : "!", line.ratio,
              line.ratio <= kLargestRatio ? " " : "!", line.seconds, best_name.c_str());
  std::fflush(stdout);
  return line;
}

}  // namespace

int main(int argc, char** argv) {
  const Eigen::Index n = argc > 1 ? std::atol(argv[1]) : 100;
  const std::uint32_t num_seeds = argc > 2 ? static_cast<std::uint32_t>(std::atol(argv[2])) : 1;
  const std::string only = argc > 3 ? argv[3] : "";
  int total = 0, honest = 0, good = 0;
  double bias = 0;
  for (std::uint32_t seed = 1; seed <= num_seeds; ++seed)
    for (const support::PublishedFunction& function : support::PublishedFunctions()) {
      if (!only.empty() && function.name != only) continue;
      const Line line = Report(function, n, seed);
      ++total;
      honest += std::abs(line.cop - line.fresh) < kLargestDifference;
      good += line.ratio <= kLargestRatio;
      bias += line.cop - line.fresh;
    }
  std::printf("honest %d, good %d of %d; bias %.4f\n", honest, good, total, bias / total);
  return 0;
}
