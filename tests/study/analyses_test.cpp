#include "study_calls.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using namespace study_calls;
using testing::HasSubstr;

TEST(Study, AnalysesRepeatOnAnyNumberOfThreadsAndAreCancelled) {
  const Project project = OpenSample();
  const std::pair<decltype(&zelstudy_optimize), const char*> cases[] = {
      {zelstudy_sensitivity, R"({"n": 128, "second_order": true, "seed": 7})"},
      {zelstudy_propagate, R"~({"distributions": ["area_1:gumbel(12, 1)", "area_3:normal(9, 1)"],
          "criteria": ["soft: displacement <= 4"], "model_error": true, "n": 9000, "seed": 7})~"},
      {zelstudy_optimize, R"({"minimize": ["mass"], "seed": 7, "starts": 6})"},
      {zelstudy_optimize, R"({"minimize": ["mass", "displacement"], "points": 5, "starts": 4})"},
      {zelstudy_optimize, R"({"minimize": ["mass"], "next": 2, "starts": 4})"},
  };
  struct State {
    int left;  // calls until it says stop
    std::thread::id thread;
  };
  const auto progress = [](double share, const char* work, void* user) {
    auto& state = *static_cast<State*>(user);
    EXPECT_EQ(std::this_thread::get_id(), state.thread);
    EXPECT_TRUE(share >= 0.0 && share <= 1.0 && work != nullptr);
    return --state.left < 0 ? 1 : 0;
  };
  for (const auto& [analyse, options] : cases) {
    std::string texts[2];
    for (const bool parallel : {false, true}) {
      setenv("ZELSOLVER_NUM_THREADS", parallel ? "4" : "1", 1);
      const Result result = Get<Result>([&, analyse = analyse, options = options](auto** out) {
        return analyse(project.get(), options, nullptr, nullptr, out);
      });
      texts[parallel] = zelstudy_result_json(result.get());
    }
    unsetenv("ZELSOLVER_NUM_THREADS");
    EXPECT_EQ(texts[0], texts[1]) << options;
    for (const int calls : {0, 1}) {
      State state{calls, std::this_thread::get_id()};
      auto* out = reinterpret_cast<zelstudy_result*>(1);
      EXPECT_EQ(analyse(project.get(), options, progress, &state, &out), ZELSTUDY_CANCELLED);
      EXPECT_EQ(out, nullptr);
      EXPECT_EQ(LastError(), "cancelled");
    }
  }

  // The document of the lightest truss: mass is known exactly, and the displacement holds it back.
  const Json::Value best = Document(Get<Result>([&](zelstudy_result** out) {
    return zelstudy_optimize(project.get(), R"({"minimize": ["mass"]})", nullptr, nullptr, out);
  }));
  EXPECT_EQ(best["status"], "optimal");
  EXPECT_EQ(best["inputs"].size(), 10u);
  EXPECT_TRUE(best["limits"]["displacement_limit"]["active"].asBool());
  double volume = 0.0;
  for (int i = 1; i <= 10; ++i)
    volume += best["inputs"]["area_" + std::to_string(i)].asDouble() * (i > 6 ? M_SQRT2 : 1.0);
  EXPECT_NEAR(best["quantities"]["mass"].asDouble() / volume, 36.0, 0.01) << "inches, 0.1 lb/in^3";
  const double least =
      36.0 * (6.0 + 4.0 * M_SQRT2) * 76.0 / 15.0;  // all areas at their lower bounds
  for (const std::string objectives : {R"("mass")", R"("mass", "displacement")"}) {
    const std::string wishes =
        R"({"project_limits": false, "limits": ["mass <= 1"], "minimize": [)" + objectives + "]}";
    const Json::Value none = Document(Get<Result>([&](zelstudy_result** out) {
      return zelstudy_optimize(project.get(), wishes.c_str(), nullptr, nullptr, out);
    }));
    EXPECT_EQ(none["status"], "infeasible") << objectives;
    EXPECT_THAT(none["message"].asString(), HasSubstr("mass <= 1"));
    EXPECT_NEAR(none["violation"]["by"].asDouble(), least - 1.0, 1e-3 * least);
  }
}

TEST(Study, RefusesDistributionsThatMeanNothing) {
  // A random variable moves such parameters into its domain; a person has mistyped them.
  const Project project = OpenSample();
  const std::pair<const char*, const char*> cases[] = {
      {"normal(1)", "mean and standard deviation are wanted"},
      {"normal(12, 0)", "Standard deviation must be strictly positive"},
      {"normal(mu=12, s=-1)", "not allowed"},
      {"normal(mean=12, cov=-0.1)", "Standard deviation must be strictly positive"},
      {"lognormal(-1, 1)", "Mean value must be strictly positive"},
      {"lognormal(mu=2, s=20)", "Shape parameter s = 10"},
      {"gumbel(12, nan)", "is not a finite number"},
      {"uniform(20, 10)", "allowed would be Lower bound a = 10, Upper bound b = 20"},
      {"loguniform(0, 10)", "not allowed"},
      {"triangular(1, 5, 4)", "Mode value c = 4"},
      {"truncatednormal(12, 0.6, 13, 11)", "Lower bound a = 11"},
      {"truncatednormal(mean=12, sd=1)", "no such mean and standard deviation"},
      {"beta(0, 1, -2, 3)", "Shape parameter alpha"},
      {"exponential(12, -1)", "Standard deviation must be strictly positive"},
      {"weibull(12, 1e-9)", "Coefficient of variation"},
      {"frechet(12, -1)", "Standard deviation must be strictly positive"},
      {"lambda(12, 1, 0, 3)", "Shape parameter l3"},
      {"polymap(12, 1, 1, 0, -5)", "Cubic coefficient d = 0"},
      {"poisson(-3)", "Expected number of events"},
      {"bernoulli(1.5)", "Success probability = 1"},
      {"bernoulli(mean=0.2, sd=0.1)", "the nearest are 0.2 and 0.4"},
      {"discrete(1, 0.3, 2, 0.5)", "add up to 0.8, not to 1"},
      {"discrete(1, -0.3, 2, 1.3)", "must not be negative"},
      {"discrete(1, 1)", "two or more pairs"},
      {"multiuniform(1, 0.3, 2, 1)", "start from 0.3, not from 0"},
      {"multiuniform(1, 0, 2, 0.7)", "rise to 0.7, not to 1"},
  };
  for (const auto& [text, message] : cases) {
    const std::string options =
        R"({"n": 2, "form": false, "distributions": ["area_1:)" + std::string(text) + R"("]})";
    zelstudy_result* out = nullptr;
    EXPECT_EQ(zelstudy_propagate(project.get(), options.c_str(), nullptr, nullptr, &out),
              ZELSTUDY_REFUSED)
        << text;
    EXPECT_THAT(LastError(), HasSubstr(message)) << text;
  }
}

}  // namespace
