#pragma once

#include "support/testing.h"

#include <gmock/gmock.h>
#include <json/json.h>
#include <zelsolver/study.h>

#include <thread>

/// Calls of the interface in C whose handles close themselves, and what the tests train on.
namespace study_calls {

struct Close {
  void operator()(zelstudy_table* table) const { zelstudy_table_close(table); }
  void operator()(zelstudy_project* project) const { zelstudy_project_close(project); }
  void operator()(zelstudy_result* result) const { zelstudy_result_close(result); }
};
using Table = std::unique_ptr<zelstudy_table, Close>;
using Project = std::unique_ptr<zelstudy_project, Close>;
using Result = std::unique_ptr<zelstudy_result, Close>;

inline std::string LastError() {
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

inline Json::Value Document(const Result& result) {
  Json::Value value;
  std::istringstream(zelstudy_result_json(result.get())) >> value;
  return value;
}

struct Array {
  std::vector<double> values;
  std::size_t rows = 0;
  std::size_t columns = 0;
};

inline Array ArrayOf(const Result& result, const std::string& name) {
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

inline Project OpenSample() {
  return Get<Project>(
      [](zelstudy_project** out) { return zelstudy_project_open(TEST_SAMPLE, nullptr, out); });
}

/// What a call of a project with options gives.
template <class Function>
Result Answer(Function* function, const Project& project, const char* options) {
  return Get<Result>([&](zelstudy_result** out) {
    return function(project.get(), options, nullptr, nullptr, out);
  });
}

/// Cancels a call behind its first `left` reports, all of them on this thread.
struct Countdown {
  int left;
  std::thread::id thread = std::this_thread::get_id();
};
inline int CountDown(double share, const char* work, void* user) {
  auto& countdown = *static_cast<Countdown*>(user);
  EXPECT_EQ(std::this_thread::get_id(), countdown.thread);
  EXPECT_TRUE(share >= 0.0 && share <= 1.0 && work != nullptr);
  return --countdown.left < 0 ? 1 : 0;
}

inline Result Solve(const Project& project, const char* options, const std::vector<double>& inputs,
                    std::size_t n) {
  return Get<Result>([&](zelstudy_result** out) {
    return zelstudy_solve(project.get(), options, inputs.data(), n, nullptr, nullptr, out);
  });
}

}  // namespace study_calls
