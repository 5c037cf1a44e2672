#include "study_calls.h"
#include "support/temporary_directory.h"

#include <zelsolver/zelsolver.hpp>

#include <cstring>
#include <fstream>

namespace {

using namespace study_calls;
using testing::HasSubstr;

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
  const Json::Value solved = Document(Answer(zelstudy_solve_csv, project, options.c_str()));
  EXPECT_EQ(solved["designs"].asUInt(), kDesigns);
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
  for (std::size_t i = 0; i < m; ++i) EXPECT_EQ(correlations.values[i * m + i], 1.0);

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
    return Document(Answer(function, project, options))["text"].asString();
  };
  Json::Value models;
  std::istringstream(write(zelstudy_export, R"({"responses": ["mass"]})")) >> models;
  EXPECT_EQ(models["responses"].size(), 1u);
  EXPECT_EQ(models["criteria_left_out"].size(), 4u);  // they read other responses
  EXPECT_THAT(write(zelstudy_export, R"({"format": "c", "name": "t"})"),
              testing::HasSubstr("void t_predict("));
  EXPECT_THAT(write(zelstudy_report, ""), testing::StartsWith("<!DOCTYPE html>"));
}

TEST(Study, EvaluatesExpressionsWithMeaningsOfAllKinds) {
  const std::tuple<const char*, const char*, const char*, std::vector<double>> cases[] = {
      {"2*a + b", R"({"a": 1.5, "b": "a + 1"})", "scalar", {5.5}},
      {"a[1] + 1", R"({"a": [1, 2.5]})", "scalar", {3.5}},
      {"a + 1", R"({"a": [1, 2.5]})", "vector", {2.0, 3.5}},
      {"transpose(a)", R"({"a": [[1, 2], [3, 4], [5, 6]]})", "matrix", {1, 3, 5, 2, 4, 6}},
      {"a && 1 < 2", R"({"a": true})", "boolean", {1.0}},
      {"sqrt(-4)", "", "scalar", {0.0}},  // and the imaginary part below
  };
  for (const auto& [expression, definitions, kind, values] : cases) {
    const Result result =
        Get<Result>([&text = expression, &values_of = definitions](zelstudy_result** out) {
          return zelstudy_evaluate(text, values_of, out);
        });
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

}  // namespace
