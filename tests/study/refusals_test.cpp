#include "study_calls.h"
#include "support/files.h"

namespace {

using namespace study_calls;
using testing::HasSubstr;

/// Calls that must be refused, on one table and one project.
class Refusals : public testing::Test {
 protected:
  using Call = std::function<int(const std::string& given, zelstudy_result** out)>;

  /// A call of a project with options.
  template <class Function>
  Call OfProject(Function* function) const {
    return [=](const std::string& options, zelstudy_result** out) {
      return function(project_.get(), options.c_str(), nullptr, nullptr, out);
    };
  }
  Call SolveAt(double area) const {
    return [=](const std::string& options, zelstudy_result** out) {
      std::vector<double> design(10, 10.0);
      design[2] = area;
      return zelstudy_solve(project_.get(), options.c_str(), design.data(), 1, nullptr, nullptr,
                            out);
    };
  }

  void Expect(const Call& call, const std::string& given, const std::string& message) {
    auto* out = reinterpret_cast<zelstudy_result*>(1);
    EXPECT_EQ(call(given, &out), ZELSTUDY_REFUSED) << given;
    EXPECT_THAT(LastError(), HasSubstr(message)) << given;
    EXPECT_EQ(out, nullptr) << given;
    EXPECT_EQ(trained_, nullptr) << given;
  }

  const Data data_;
  const Table table_ = data_.MakeTable();
  const Project project_ = OpenSample();
  zelstudy_project* trained_ = nullptr;
};

TEST_F(Refusals, SayWhatIsWrongAsTheFileHasIt) {
  using Out = zelstudy_result**;
  const std::map<std::string, Call> calls{
      {"train",
       [&](const std::string& options, Out out) {
         return zelstudy_train(table_.get(), options.c_str(), nullptr, nullptr, &trained_, out);
       }},
      {"solve", SolveAt(10.0)},
      {"solve_outside", SolveAt(1e9)},
      {"solve_csv", OfProject(zelstudy_solve_csv)},
      {"export", OfProject(zelstudy_export)},
      {"optimize", OfProject(zelstudy_optimize)},
      {"propagate", OfProject(zelstudy_propagate)},
      {"distribution",
       [&](const std::string& text, Out out) {
         return OfProject(zelstudy_propagate)(
             R"({"n": 2, "form": false, "distributions": ["area_1:)" + text + "\"]}", out);
       }},
      {"describe",
       [&](const std::string& options, Out out) {
         return zelstudy_describe(project_.get(), options.c_str(), out);
       }},
      {"sample", [](const std::string& options,
                    Out out) { return zelstudy_sample(nullptr, options.c_str(), out); }},
      {"evaluate",
       [](const std::string& text, Out out) {
         const std::size_t end = text.find(" with ");
         return zelstudy_evaluate(text.substr(0, end).c_str(), text.substr(end + 6).c_str(), out);
       }},
      {"help", [](const std::string& name, Out out) { return zelstudy_help(name.c_str(), out); }},
      {"hash", [](const std::string& path, Out out) { return zelstudy_hash(path.c_str(), out); }},
  };
  std::istringstream file(support::ReadFile(TEST_REFUSALS));
  int num_cases = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.substr(0, 2) == "//") continue;
    ++num_cases;
    const std::size_t name = line.find(' '), arrow = line.find(" => ");
    ASSERT_NE(arrow, std::string::npos) << line;
    Expect(calls.at(line.substr(0, name)), line.substr(name + 1, arrow - name - 1),
           line.substr(arrow + 4));
  }
  EXPECT_GT(num_cases, 60);
}

TEST_F(Refusals, OfNullPointersAndSizes) {
  const double inside[10] = {10, 10, 10, 10, 10, 10, 10, 10, 10, 10};
  const auto solve = [&](const double* inputs, std::size_t n) {
    return [=](const std::string&, zelstudy_result** out) {
      return zelstudy_solve(project_.get(), nullptr, inputs, n, nullptr, nullptr, out);
    };
  };
  const auto evaluate = [](const std::string&, zelstudy_result** out) {
    return zelstudy_evaluate(nullptr, nullptr, out);
  };
  const auto describe = [](const std::string&, zelstudy_result** out) {
    return zelstudy_describe(nullptr, nullptr, out);
  };
  Expect(solve(nullptr, 1), "null inputs", "inputs: a null pointer");
  Expect(solve(inside, ~std::size_t{0}), "too many designs", "designs cannot be");
  Expect(evaluate, "null expression", "expression: a null pointer");
  Expect(describe, "null project", "project: a null pointer");
  EXPECT_EQ(zelstudy_evaluate("1", nullptr, nullptr), ZELSTUDY_REFUSED);
  EXPECT_EQ(LastError(), "out: a null pointer");

  const std::tuple<const char*, const double*, std::size_t, const char*> columns[] = {
      {"x", data_.x.data(), Data::kSize, "has a column \"x\" already"},
      {"w", data_.x.data(), 3, "has 3 values, but the table has 40 rows"},
      {"w", nullptr, Data::kSize, "null pointer"}};
  for (const auto& [name, values, size, message] : columns) {
    EXPECT_EQ(zelstudy_table_add_numbers(table_.get(), name, values, size), 1);
    EXPECT_THAT(LastError(), HasSubstr(message));
  }
  const auto described = Document(Get<Result>(
      [&](zelstudy_result** out) { return zelstudy_table_describe(table_.get(), out); }));
  EXPECT_EQ(described["columns"].size(), 4u) << "a refused column leaves the table as it was";

  zelstudy_project* opened = nullptr;
  EXPECT_EQ(zelstudy_project_open("/none", nullptr, &opened), ZELSTUDY_REFUSED);
  EXPECT_EQ(zelstudy_project_open(TEST_SAMPLE, "00", &opened), ZELSTUDY_REFUSED);
  EXPECT_THAT(LastError(), HasSubstr("another signature"));
  EXPECT_EQ(zelstudy_project_save(project_.get(), "/none/x.vrdb"), ZELSTUDY_REFUSED);
  EXPECT_THAT(LastError(), HasSubstr("/none"));
}

}  // namespace
