#include "study_calls.h"

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
  for (const auto& [analyse, options] : cases) {
    std::string texts[2];
    for (const bool parallel : {false, true}) {
      setenv("ZELSOLVER_NUM_THREADS", parallel ? "4" : "1", 1);
      const Result result = Answer(analyse, project, options);
      texts[parallel] = zelstudy_result_json(result.get());
    }
    unsetenv("ZELSOLVER_NUM_THREADS");
    EXPECT_EQ(texts[0], texts[1]) << options;
    for (const int calls : {0, 1}) {
      Countdown state{calls};
      auto* out = reinterpret_cast<zelstudy_result*>(1);
      EXPECT_EQ(analyse(project.get(), options, CountDown, &state, &out), ZELSTUDY_CANCELLED);
      EXPECT_EQ(out, nullptr);
      EXPECT_EQ(LastError(), "cancelled");
    }
  }

  // The document of the lightest truss: mass is known exactly, and the displacement holds it back.
  const Json::Value best =
      Document(Answer(zelstudy_optimize, project, R"({"minimize": ["mass"]})"));
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
    const Json::Value none = Document(Answer(zelstudy_optimize, project, wishes.c_str()));
    EXPECT_EQ(none["status"], "infeasible") << objectives;
    EXPECT_THAT(none["message"].asString(), HasSubstr("mass <= 1"));
    EXPECT_NEAR(none["violation"]["by"].asDouble(), least - 1.0, 1e-3 * least);
  }
}

}  // namespace
