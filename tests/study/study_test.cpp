#include "support/temporary_directory.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>
#include <unistd.h>
#include <zelsolver/study.h>
#include <zelsolver/zelsolver.hpp>

#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <thread>

namespace {

using testing::HasSubstr;

struct Close {
  void operator()(zelstudy_table* table) const { zelstudy_table_close(table); }
  void operator()(zelstudy_project* project) const { zelstudy_project_close(project); }
  void operator()(zelstudy_result* result) const { zelstudy_result_close(result); }
};
using Table = std::unique_ptr<zelstudy_table, Close>;
using Project = std::unique_ptr<zelstudy_project, Close>;
using Result = std::unique_ptr<zelstudy_result, Close>;

std::string LastError() {
  const char* const text = zelstudy_last_error();
  return text == nullptr ? "" : text;
}

/// The handle that `call` gives out; the call must succeed.
template <class Owner, class Call>
Owner Get(const Call& call) {
  typename Owner::pointer handle = nullptr;
  EXPECT_EQ(call(&handle), ZELSTUDY_OK) << LastError();
  return Owner(handle);
}

Json::Value Document(const Result& result) {
  Json::Value value;
  std::istringstream(zelstudy_result_json(result.get())) >> value;
  return value;
}

struct Array {
  std::vector<double> values;
  std::size_t rows = 0;
  std::size_t columns = 0;
};

Array ArrayOf(const Result& result, const std::string& name) {
  const double* data = nullptr;
  Array array;
  EXPECT_EQ(zelstudy_result_array(result.get(), name.c_str(), &data, &array.rows, &array.columns),
            0)
      << LastError();
  array.values.assign(data, data + array.rows * array.columns);
  return array;
}

/// y = sin(5 x) + z^2 at a lattice of good points, with a word beside them.
struct Data {
  static constexpr std::size_t kSize = 40;
  Data() {
    for (std::size_t i = 1; i <= kSize; ++i) {
      x.push_back(std::fmod(0.754877666 * static_cast<double>(i), 1.0));
      z.push_back(std::fmod(0.569840291 * static_cast<double>(i), 1.0));
      y.push_back(std::sin(5.0 * x.back()) + z.back() * z.back());
      words.push_back(i % 2 == 0 ? "steel" : "brass");
    }
  }
  Table MakeTable() const {
    Table table = Get<Table>(zelstudy_table_new);
    EXPECT_EQ(zelstudy_table_add_numbers(table.get(), "x", x.data(), kSize), 0);
    EXPECT_EQ(zelstudy_table_add_numbers(table.get(), "z", z.data(), kSize), 0);
    EXPECT_EQ(zelstudy_table_add_texts(table.get(), "material", words.data(), kSize), 0);
    EXPECT_EQ(zelstudy_table_add_numbers(table.get(), "y", y.data(), kSize), 0);
    EXPECT_EQ(zelstudy_table_set_unit(table.get(), "x", "mm"), 0);
    return table;
  }
  std::vector<double> x, z, y;
  std::vector<const char*> words;
};

constexpr const char* kTraining =
    R"({"inputs": ["all"], "responses": ["y"], "criteria": ["twice: 2*y"], "budget": 0.5})";

struct Trained {
  explicit Trained(const Table& table) {
    zelstudy_project* trained = nullptr;
    result = Get<Result>([&](zelstudy_result** out) {
      return zelstudy_train(table.get(), kTraining, nullptr, nullptr, &trained, out);
    });
    project.reset(trained);
  }
  Project project;
  Result result;
};

Project OpenSample() {
  return Get<Project>(
      [](zelstudy_project** out) { return zelstudy_project_open(TEST_SAMPLE, nullptr, out); });
}

Result Solve(const Project& project, const char* options, const std::vector<double>& inputs,
             std::size_t n) {
  return Get<Result>([&](zelstudy_result** out) {
    return zelstudy_solve(project.get(), options, inputs.data(), n, nullptr, nullptr, out);
  });
}

TEST(Study, TrainsTheSameFromColumnsAndFromACsv) {
  const support::TemporaryDirectory folder;
  const Data data;
  const std::string path = folder.File("table.csv");
  std::ofstream csv(path);
  csv.precision(17);
  csv << "x [mm],z,material,y\n";
  for (std::size_t i = 0; i < Data::kSize; ++i)
    csv << data.x[i] << ',' << data.z[i] << ',' << data.words[i] << ',' << data.y[i] << '\n';
  csv.close();
  const Table read = Get<Table>(
      [&](zelstudy_table** out) { return zelstudy_table_read_csv(path.c_str(), nullptr, out); });
  const Trained from_csv(read);
  const Table columns = data.MakeTable();
  const Trained from_columns(columns);
  const Json::Value document = Document(from_columns.result);
  EXPECT_EQ(document["inputs"][0]["unit"], "mm");
  EXPECT_EQ(document["inputs"][2]["words"][1], "steel");
  const Json::Value described = Document(Get<Result>([&](zelstudy_result** out) {
    return zelstudy_describe(from_columns.project.get(), nullptr, out);
  }));
  EXPECT_EQ(described["inputs"][0]["unit"], "mm");
  EXPECT_FALSE(described["inputs"][0].isMember("states"));
  EXPECT_EQ(described["inputs"][2]["states"][1].asDouble(), 1.0);
  Json::Value same = Document(from_csv.result)["responses"];
  EXPECT_EQ(document["responses"].size(), 1u);
  EXPECT_EQ(document["responses"][0]["cop"], same[0]["cop"]);
  EXPECT_EQ(document["responses"][0]["candidates"].size(), same[0]["candidates"].size());

  const std::vector<double> designs = {0.5, 0.25, 1.0, 0.1, 0.9, 0.0};
  const Result a = Solve(from_columns.project, R"({"criteria": true})", designs, 2);
  EXPECT_EQ(ArrayOf(a, "responses").values,
            ArrayOf(Solve(from_csv.project, nullptr, designs, 2), "responses").values);
  for (std::size_t d = 0; d < 2; ++d) {
    const double y = ArrayOf(a, "responses").values[d];
    EXPECT_NEAR(y, std::sin(5.0 * designs[3 * d]) + std::pow(designs[3 * d + 1], 2), 0.01);
    EXPECT_EQ(ArrayOf(a, "criteria").values[d], 2.0 * y);
  }

  const Result residuals = Get<Result>([&](zelstudy_result** out) {
    return zelstudy_residuals(from_columns.project.get(), R"({"responses": ["y"]})", out);
  });
  const Array measured = ArrayOf(residuals, "y/measured");
  const Array predicted = ArrayOf(residuals, "y/predicted");
  const Array numbers = ArrayOf(residuals, "y/designs");
  const Array inputs = ArrayOf(residuals, "y/inputs");
  ASSERT_EQ(measured.rows, Data::kSize);
  double mean = 0.0;
  for (const double y : measured.values) mean += y / Data::kSize;
  double sse = 0.0;
  double sst = 0.0;
  for (std::size_t i = 0; i < Data::kSize; ++i) {
    const auto row = static_cast<std::size_t>(numbers.values[i]) - 1;
    EXPECT_EQ(measured.values[i], data.y[row]);
    EXPECT_EQ(inputs.values[3 * i + 1], data.z[row]);
    sse += std::pow(measured.values[i] - predicted.values[i], 2);
    sst += std::pow(measured.values[i] - mean, 2);
  }
  EXPECT_NEAR(document["responses"][0]["cop"].asDouble(), 1.0 - sse / sst, 1e-9);
}

TEST(Study, PredictsWhatTheOtherLibraryPredictsAlsoFromBytes) {
  const support::TemporaryDirectory folder;
  const Project opened = OpenSample();
  const void* bytes = nullptr;
  std::size_t size = 0;
  ASSERT_EQ(zelstudy_project_bytes(opened.get(), &bytes, &size), 0);
  EXPECT_EQ(std::string(static_cast<const char*>(bytes), size), support::ReadFile(TEST_SAMPLE));
  const std::string copy = folder.File("copy.vrdb");
  ASSERT_EQ(zelstudy_project_save(opened.get(), copy.c_str()), 0) << LastError();
  EXPECT_EQ(support::ReadFile(copy), support::ReadFile(TEST_SAMPLE));
  const std::string damaged = support::ReadFile(copy).substr(0, size / 2);
  const Project project = Get<Project>(
      [&](zelstudy_project** out) { return zelstudy_project_from_bytes(bytes, size, out); });

  const zelsolver::Project other(TEST_SAMPLE);
  const std::size_t m = other.GetInputs().size();
  constexpr std::size_t kDesigns = 3;
  std::vector<double> by_row(kDesigns * m), by_input(kDesigns * m);
  for (std::size_t d = 0; d < kDesigns; ++d)
    for (std::size_t i = 0; i < m; ++i)
      by_row[d * m + i] = by_input[i * kDesigns + d] =
          7.0 + std::fmod(static_cast<double>(5 * d + 3 * i), 15.0);
  const Result result = Solve(
      project,
      R"({"criteria": true, "errors": ["mass"], "densities": ["mass"], "gradients": ["mass"]})",
      by_row, kDesigns);
  const auto all = other.Solve(by_input, ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA);
  const Array responses = ArrayOf(result, "responses");
  ASSERT_EQ(responses.columns, other.GetOutputs().size());
  for (std::size_t d = 0; d < kDesigns; ++d)
    for (std::size_t k = 0; k < responses.columns; ++k)
      EXPECT_EQ(responses.values[d * responses.columns + k], all[k * kDesigns + d]);
  EXPECT_EQ(ArrayOf(result, "criteria").values,
            std::vector<double>(
                all.end() - static_cast<std::ptrdiff_t>(kDesigns * other.GetCriteria().size()),
                all.end()));
  for (const auto& [name, flag] : {std::pair("mass/errors", ZEL_RESPONSE_ERRORS),
                                   std::pair("mass/density", ZEL_RESPONSE_DENSITIES),
                                   std::pair("mass/gradients", ZEL_RESPONSE_GRADIENTS)})
    EXPECT_EQ(ArrayOf(result, name).values,
              other.SolveResponse("mass", by_input, static_cast<unsigned int>(flag)));
  const Result one = Solve(project, R"({"responses": ["displacement"]})", by_row, kDesigns);
  for (std::size_t d = 0; d < kDesigns; ++d)
    EXPECT_EQ(ArrayOf(one, "responses").values[d], responses.values[d * responses.columns + 1]);

  // The same designs through a CSV.
  const std::string in = folder.File("in.csv");
  std::ofstream csv(in);
  for (std::size_t i = 0; i < m; ++i) csv << other.GetInputs()[i] << (i + 1 < m ? ',' : '\n');
  for (std::size_t i = 0; i < by_row.size(); ++i) csv << by_row[i] << ((i + 1) % m ? ',' : '\n');
  csv.close();
  const std::string out = folder.File("out.csv");
  const std::string options = R"({"in": ")" + in + R"(", "out": ")" + out + "\"}";
  EXPECT_EQ(Document(Get<Result>([&](zelstudy_result** handle) {
              return zelstudy_solve_csv(project.get(), options.c_str(), nullptr, nullptr, handle);
            }))["designs"]
                .asUInt(),
            kDesigns);
  std::istringstream lines(support::ReadFile(out));
  std::string line;
  std::getline(lines, line);
  std::getline(lines, line);
  EXPECT_EQ(std::stod(line), responses.values[0]);

  zelstudy_project* none = nullptr;
  EXPECT_EQ(zelstudy_project_from_bytes(damaged.data(), damaged.size(), &none), ZELSTUDY_REFUSED);
  EXPECT_THAT(LastError(), HasSubstr("the bytes: "));
}

TEST(Study, DescribesAndSamplesRandomInputs) {
  const Project project = Get<Project>([](zelstudy_project** out) {
    return zelstudy_project_open(TEST_SAMPLE_RANDOM, nullptr, out);
  });
  const Result result = Get<Result>([&](zelstudy_result** out) {
    return zelstudy_describe(project.get(), R"({"candidates": true})", out);
  });
  const Json::Value document = Document(result);
  const std::size_t m = document["inputs"].size();
  ASSERT_GT(document["correlations"].size(), 0u);
  const Json::Value& pair = document["correlations"][0];
  const Array correlations = ArrayOf(result, "correlations");
  std::vector<std::size_t> place;
  for (Json::ArrayIndex i = 0; i < m; ++i)
    for (const Json::Value& name : pair["inputs"])
      if (document["inputs"][i]["name"] == name) place.push_back(i);
  ASSERT_EQ(place.size(), 2u);
  EXPECT_EQ(correlations.values[place[0] * m + place[1]], pair["coefficient"].asDouble());
  EXPECT_EQ(correlations.values[place[0] * m + place[0]], 1.0);

  // The mean of a large sample is that of the distribution, to within five standard errors.
  const Array points =
      ArrayOf(Get<Result>([&](zelstudy_result** out) {
                return zelstudy_sample(project.get(),
                                       R"({"scheme": "latin-hypercube-sampling", "n": 400})", out);
              }),
              "points");
  ASSERT_EQ(points.rows, 400u);
  for (std::size_t i = 0; i < m; ++i) {
    double sum = 0.0;
    for (std::size_t d = 0; d < points.rows; ++d) sum += points.values[d * m + i];
    const Json::Value& moments =
        document["inputs"][static_cast<Json::ArrayIndex>(i)]["distribution"]["moments"];
    const double mean = moments["Mean value"].asDouble();
    EXPECT_NEAR(sum / 400.0, mean, 0.02 * std::abs(mean)) << moments;
  }
}

TEST(Study, ExportsAndReports) {
  const Project project = OpenSample();
  const auto write = [&](auto* function, const char* options) {
    return Document(Get<Result>([&](zelstudy_result** out) {
      return function(project.get(), options, nullptr, nullptr, out);
    }));
  };
  Json::Value models;
  std::istringstream(write(zelstudy_export, R"({"responses": ["mass"]})")["text"].asString()) >>
      models;
  EXPECT_EQ(models["responses"].size(), 1u);
  EXPECT_EQ(models["criteria_left_out"].size(), 4u);  // they read other responses
  EXPECT_THAT(write(zelstudy_export, R"({"format": "c", "name": "t"})")["text"].asString(),
              testing::HasSubstr("void t_predict("));
  EXPECT_THAT(write(zelstudy_report, "")["text"].asString(),
              testing::StartsWith("<!DOCTYPE html>"));
}

TEST(Study, EvaluatesExpressionsWithMeaningsOfAllKinds) {
  const struct {
    const char* expression;
    const char* definitions;
    const char* kind;
    std::vector<double> values;
  } cases[] = {
      {"2*a + b", R"({"a": 1.5, "b": "a + 1"})", "scalar", {5.5}},
      {"a[1] + 1", R"({"a": [1, 2.5]})", "scalar", {3.5}},
      {"a + 1", R"({"a": [1, 2.5]})", "vector", {2.0, 3.5}},
      {"transpose(a)", R"({"a": [[1, 2], [3, 4], [5, 6]]})", "matrix", {1, 3, 5, 2, 4, 6}},
      {"a && 1 < 2", R"({"a": true})", "boolean", {1.0}},
      {"sqrt(-4)", "", "scalar", {0.0}},  // and the imaginary part below
  };
  for (const auto& [expression, definitions, kind, values] : cases) {
    const Result result = Get<Result>(
        [&](zelstudy_result** out) { return zelstudy_evaluate(expression, definitions, out); });
    if (!result) continue;
    EXPECT_EQ(Document(result)["kind"], kind) << expression;
    EXPECT_THAT(ArrayOf(result, "value").values, testing::Pointwise(testing::DoubleEq(), values))
        << expression;
    if (std::strcmp(expression, "sqrt(-4)") != 0) continue;
    EXPECT_EQ(ArrayOf(result, "imaginary").values, std::vector<double>{2.0});
  }
  for (const auto& list : {zelstudy_functions, zelstudy_macros, zelstudy_schemes})
    EXPECT_GT(Document(Get<Result>(list)).size(), 0u);
}

TEST(Study, AnalysesAProject) {
  const Project project = OpenSample();
  int num_reports = 0;
  const auto count = [](double share, const char*, void* user) {
    ++*static_cast<int*>(user);
    return share > 1.0 ? 1 : 0;
  };
  const Json::Value sensitivity = Document(Get<Result>([&](zelstudy_result** out) {
    return zelstudy_sensitivity(project.get(), R"({"n": 512, "fixed": ["area_1=10"]})", count,
                                &num_reports, out);
  }));
  EXPECT_GT(num_reports, 0);
  EXPECT_EQ(sensitivity["groups"].size(), 9u);
  // The mass is a sum of areas times lengths: 5 bars of length 1 vary, and 4 of the root of 2.
  EXPECT_NEAR(sensitivity["quantities"]["mass"]["first"]["area_7"].asDouble(), 2.0 / 13.0, 1e-2);

  const Json::Value scatter = Document(Get<Result>([&](zelstudy_result** out) {
    return zelstudy_propagate(
        project.get(),
        R"~({"distributions": ["area_1:normal(10, 1)"], "criteria": ["thin: area_1 >= 6"],
             "quantiles": [0.5], "n": 1000, "form": true})~",
        nullptr, nullptr, out);
  }));
  EXPECT_NEAR(scatter["limits"]["thin"]["beta"].asDouble(), 4.0, 1e-3);
  EXPECT_EQ(scatter["quantities"]["mass"]["quantiles"].getMemberNames(),
            std::vector<std::string>{"0.5"});
}

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
  const Json::Value none = Document(Get<Result>([&](zelstudy_result** out) {
    return zelstudy_optimize(project.get(), R"({"minimize": ["mass"], "project_limits": false,
                             "limits": ["mass <= 1"]})",
                             nullptr, nullptr, out);
  }));
  EXPECT_EQ(none["status"], "infeasible");
  EXPECT_THAT(none["message"].asString(), HasSubstr("mass <= 1"));
}

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
  const struct {
    std::function<int(zelstudy_result**)> call;
    const char* message;
  } cases[] = {
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

TEST(Study, ACallThatIsCancelledLeavesNothing) {
  struct State {
    int left;
    std::thread::id thread;
  };
  const auto progress = [](double, const char*, void* user) {
    auto& state = *static_cast<State*>(user);
    EXPECT_EQ(std::this_thread::get_id(), state.thread);
    return --state.left < 0 ? 1 : 0;
  };
  const Table table = Data().MakeTable();
  int status = ZELSTUDY_CANCELLED;
  for (const int calls : {0, 1, 2, 1 << 20}) {
    State state{calls, std::this_thread::get_id()};
    zelstudy_project* project = nullptr;
    zelstudy_result* result = nullptr;
    status = zelstudy_train(table.get(), kTraining, progress, &state, &project, &result);
    const Project owned(project);
    const Result result_owned(result);
    EXPECT_TRUE(calls > 0 || status == ZELSTUDY_CANCELLED);
    EXPECT_EQ(status == ZELSTUDY_OK, project != nullptr);
    EXPECT_EQ(status == ZELSTUDY_OK, result != nullptr);
    EXPECT_EQ(LastError(), status == ZELSTUDY_OK ? "" : "cancelled");
  }
  EXPECT_EQ(status, ZELSTUDY_OK) << "the table is as it was";

  const Project sample = OpenSample();
  const std::vector<double> designs(10 * 70000, 10.0);
  for (int calls = 0; calls < 2; ++calls) {
    State state{calls, std::this_thread::get_id()};
    zelstudy_result* result = nullptr;
    EXPECT_EQ(zelstudy_solve(sample.get(), R"({"responses": ["mass"]})", designs.data(), 70000,
                             progress, &state, &result),
              ZELSTUDY_CANCELLED);
  }
}

TEST(Study, ThreadsHaveErrorsOfTheirOwnAndShareAProject) {
  const Project project = OpenSample();
  const std::vector<double> design(10, 10.0);
  const auto expected = ArrayOf(Solve(project, nullptr, design, 1), "responses").values;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, name = "f" + std::to_string(t)] {
      for (int i = 0; i < 50; ++i) {
        zelstudy_result* none = nullptr;
        EXPECT_EQ(zelstudy_help(name.c_str(), &none), ZELSTUDY_REFUSED);
        EXPECT_EQ(ArrayOf(Solve(project, R"({"criteria": true})", design, 1), "responses").values,
                  expected);
        EXPECT_EQ(zelstudy_help(name.c_str(), &none), ZELSTUDY_REFUSED);
        EXPECT_THAT(LastError(), HasSubstr('"' + name + '"'));
      }
    });
  for (std::thread& thread : threads) thread.join();
}

/// A copy of the library that comes and goes, as a plug-in of a host brings it along.
TEST(Study, GoesOnWhenAnotherCopyIsUnloaded) {
  const support::TemporaryDirectory folder;
  const std::string path = folder.File("copy.so");
  support::WriteFile(path, support::ReadFile(TEST_LIBRARY));
  void* const copy = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(copy, nullptr) << dlerror();
  const auto open = reinterpret_cast<int (*)(const char*, const char*, zelstudy_project**)>(
      dlsym(copy, "zelstudy_project_open"));
  const auto close =
      reinterpret_cast<void (*)(zelstudy_project*)>(dlsym(copy, "zelstudy_project_close"));
  zelstudy_project* project = nullptr;
  EXPECT_EQ(open(TEST_SAMPLE, nullptr, &project), ZELSTUDY_OK);
  close(project);
  dlclose(copy);
  EXPECT_NE(OpenSample(), nullptr);
  zelsolver::Project::CloseAll();
  EXPECT_EQ(zelsolver::Project(TEST_SAMPLE).GetInputs().size(), 10u);
}

long ResidentPages() {
  long all = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident;
}

TEST(Study, CallsKeepNoMemory) {
  const Project project = OpenSample();
  const std::vector<double> design(10, 10.0);
  const auto run = [&](int rounds) {
    for (int i = 0; i < rounds; ++i) {  // 10 calls a round
      const Table table = Data().MakeTable();
      Get<Result>([&](zelstudy_result** out) { return zelstudy_table_describe(table.get(), out); });
      Solve(project, nullptr, design, 1);
      zelstudy_result* none = nullptr;
      zelstudy_solve(project.get(), "{\"x\": 1}", design.data(), 1, nullptr, nullptr, &none);
      Get<Result>([](zelstudy_result** out) { return zelstudy_evaluate("1 + 1", "", out); });
    }
  };
  run(500);
  const long before = ResidentPages();
  run(9500);
  // A hundred bytes lost a round were 230 pages.
  EXPECT_LT(ResidentPages() - before, 200);
  for (int i = 0; i < 20; ++i) OpenSample();
  const long opened = ResidentPages();
  for (int i = 0; i < 100; ++i) OpenSample();
  EXPECT_LT(ResidentPages() - opened, 200);
}

}  // namespace
