#include "study_calls.h"

#include <gmock/gmock.h>

namespace {

using namespace study_calls;
using testing::HasSubstr;

TEST(Study, RefusesBadInputAndSaysWhatIsWrong) {
  const Data data;
  const Table table = data.MakeTable();
  const Project project = OpenSample();
  const double inside[10] = {10, 10, 10, 10, 10, 10, 10, 10, 10, 10};
  const double outside[10] = {10, 10, 1e9, 10, 10, 10, 10, 10, 10, 10};
  zelstudy_project* trained = nullptr;
  const auto train = [&](const char* options) {
    return [&, options](zelstudy_result** out) {
      return zelstudy_train(table.get(), options, nullptr, nullptr, &trained, out);
    };
  };
  const auto solve = [&](const char* options, const double* inputs, std::size_t n) {
    return [&, options, inputs, n](zelstudy_result** out) {
      return zelstudy_solve(project.get(), options, inputs, n, nullptr, nullptr, out);
    };
  };
  const auto sample = [&](const char* options) {
    return [options](zelstudy_result** out) { return zelstudy_sample(nullptr, options, out); };
  };
  const auto propagate = [&](const char* options) {
    return [&, options](zelstudy_result** out) {
      return zelstudy_propagate(project.get(), options, nullptr, nullptr, out);
    };
  };
  const auto optimize = [&](const char* options) {
    return [&, options](zelstudy_result** out) {
      return zelstudy_optimize(project.get(), options, nullptr, nullptr, out);
    };
  };
  const auto evaluate = [&](const char* expression, const char* definitions) {
    return [expression, definitions](zelstudy_result** out) {
      return zelstudy_evaluate(expression, definitions, out);
    };
  };
  const std::pair<std::function<int(zelstudy_result**)>, const char*> cases[] = {
      {train("{"), "options: no JSON"},
      {[&](zelstudy_result** out) {
         return zelstudy_export(project.get(), R"({"format": "go"})", nullptr, nullptr, out);
       },
       R"(no export format "go")"},
      {train("[]"), "options: a JSON object is wanted, not an array"},
      {train(R"({"inputs": ["x"]})"), "responses: names of columns are wanted"},
      {train(R"({"inputs": ["x"], "responses": ["y"], "sed": 1})"), R"(did you mean "seed"?)"},
      {train(R"({"inputs": "x", "responses": ["y"]})"),
       "inputs: an array of texts is wanted, not a text"},
      {train(R"({"inputs": ["x\u0000"], "responses": ["y"]})"),
       "inputs: a text with a NUL character"},
      {train(R"({"inputs": ["x", "x"], "responses": ["y"]})"), R"(inputs: "x" stands there twice)"},
      {train(R"({"inputs": ["x"], "responses": ["w"]})"),
       R"(table: no column for the response "w")"},
      {train(R"({"inputs": ["q*"], "responses": ["y"]})"), R"(inputs: "q*" fits no column)"},
      {train(R"({"inputs": ["x"], "responses": ["material"]})"),
       R"(table: row 0, column "material": "brass" is not a number)"},
      {train(R"({"inputs": ["x"], "responses": ["y"], "seed": -1})"),
       "seed: -1 is no whole number"},
      {train(R"({"inputs": ["x"], "responses": ["y"], "budget": 0})"), "budget must be a positive"},
      {train(R"({"inputs": ["x"], "responses": ["y"], "criteria": ["c: w"]})"),
       R"(criterion "c": there is no input, response or criterion "w")"},
      {solve(nullptr, nullptr, 1), "inputs: a null pointer"},
      {solve(nullptr, inside, ~std::size_t{0}), "designs cannot be"},
      {solve(nullptr, outside, 1), R"(design 0, input "area_3": 1e+09 is outside [)"},
      {solve(R"({"gradients": ["maas"]})", inside, 1),
       R"(gradients: no response "maas"; did you mean "mass"?)"},
      {solve(R"({"errors": 1})", inside, 1), "errors: true, false or an array of texts is wanted"},
      {sample("{}"), "inputs: these, or a project, are wanted"},
      {sample(R"({"scheme": "x", "n": 3, "inputs": ["a:0:1"]})"), R"(scheme: "x" is none of)"},
      {sample(R"({"scheme": "sobol", "inputs": ["a:0:1"]})"), "n: sobol-sequence takes a number"},
      {sample(R"({"scheme": "latin-hypercube-sampling", "n": 1e15, "inputs": ["a:0:1"]})"),
       "too large"},
      {sample(R"({"scheme": "sobol", "n": 3, "inputs": ["a:1:0"]})"), "the lower bound is above"},
      {propagate("{}"), "No input has a distribution."},
      {propagate(R"({"n": 1e99})"), "n: 1e+99 is no whole number from 0 to 1000000000"},
      {propagate(R"~({"n": 1, "distributions": ["area_1:normal(9, 1)"]})~"),
       "needs at least 2 designs"},
      {optimize("{}"), "No objective"},
      {optimize(R"({"minimize": ["maas"]})"), R"(did you mean "mass"?)"},
      {optimize(R"({"minimize": ["mass"], "starts": -1})"), "starts: -1 is no whole number from 0"},
      {propagate(R"({"quantiles": [true]})"), "quantiles: an array of numbers is wanted"},
      {evaluate("1 +", nullptr), "parsing"},
      {evaluate("a", R"({"a": [[1], [2, 3]]})"), R"(definitions: "a": a number)"},
      {evaluate("1", R"({"pi": 1})"), "pi"},
      {evaluate(nullptr, nullptr), "expression: a null pointer"},
      {[](zelstudy_result** out) { return zelstudy_help("abss", out); }, R"(did you mean "abs"?)"},
      {[](zelstudy_result** out) { return zelstudy_hash("/none", out); }, "/none"},
      {[&](zelstudy_result** out) {
         return zelstudy_solve_csv(project.get(), R"({"in": "-", "out": "x"})", nullptr, nullptr,
                                   out);
       },
       "in: a file is wanted"},
      {[](zelstudy_result** out) { return zelstudy_describe(nullptr, nullptr, out); },
       "project: a null pointer"},
      {[&](zelstudy_result** out) {
         return zelstudy_describe(project.get(), R"({"models": "yes"})", out);
       },
       "models: true or false is wanted, not a text"},
  };
  for (const auto& [call, message] : cases) {
    auto* out = reinterpret_cast<zelstudy_result*>(1);
    EXPECT_EQ(call(&out), ZELSTUDY_REFUSED) << message;
    EXPECT_THAT(LastError(), HasSubstr(message));
    EXPECT_EQ(out, nullptr) << message;
    EXPECT_EQ(trained, nullptr) << message;
  }
  EXPECT_EQ(evaluate("1", nullptr)(nullptr), ZELSTUDY_REFUSED);
  EXPECT_EQ(LastError(), "out: a null pointer");
  EXPECT_EQ(zelstudy_table_add_numbers(table.get(), "x", data.x.data(), Data::kSize), 1);
  EXPECT_THAT(LastError(), HasSubstr("has a column \"x\" already"));
  EXPECT_EQ(zelstudy_table_add_numbers(table.get(), "w", data.x.data(), 3), 1);
  EXPECT_THAT(LastError(), HasSubstr("has 3 values, but the table has 40 rows"));
  EXPECT_EQ(zelstudy_table_add_numbers(table.get(), "w", nullptr, Data::kSize), 1);
  zelstudy_project* opened = nullptr;
  EXPECT_EQ(zelstudy_project_open("/none", nullptr, &opened), ZELSTUDY_REFUSED);
  EXPECT_EQ(zelstudy_project_open(TEST_SAMPLE, "00", &opened), ZELSTUDY_REFUSED);
  EXPECT_THAT(LastError(), HasSubstr("another signature"));
  EXPECT_EQ(zelstudy_project_save(project.get(), "/none/x.vrdb"), ZELSTUDY_REFUSED);
  EXPECT_THAT(LastError(), HasSubstr("/none"));
  EXPECT_EQ(Document(Get<Result>([&](zelstudy_result** out) {
              return zelstudy_table_describe(table.get(), out);
            }))["columns"]
                .size(),
            4u)
      << "a refused column leaves the table as it was";
}

}  // namespace
