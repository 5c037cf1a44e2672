#include "end_to_end.h"

namespace end_to_end {
namespace {

using testing::ElementsAre;

class Query : public EndToEnd {
 protected:
  /// The bytes of a name list, which `get` obtains, up to and including the two NULs.
  template <class Get>
  static std::string Block(const Get& get) {
    char* names = nullptr;
    EXPECT_EQ(get(&names), 0) << LastError();
    std::string block;
    if (names == nullptr) return block;
    for (std::size_t i = 0;; ++i) {
      block += names[i];
      if (i > 0 && names[i] == '\0' && names[i - 1] == '\0') break;
    }
    EXPECT_EQ(dzel2_free(names), 0);
    return block;
  }

  static std::string Joined(const std::vector<std::string>& names, const std::string& delimiter) {
    std::string block;
    for (std::size_t i = 0; i < names.size(); ++i) block += (i > 0 ? delimiter : "") + names[i];
    return block + std::string(2, '\0');
  }

  const std::vector<std::string> inputs_{"x", "y", kThirdInput};
  const std::vector<std::string> outputs_{"mass", "flat", "stress[0]", "stress[1]", "stress[2]"};
  const std::vector<std::string> criteria_{"goal", "limit"};
};

TEST_F(Query, Dimensions) {
  const std::tuple<unsigned int, unsigned int, std::vector<unsigned int>> cases[] = {
      {0, 0, {}},     {1, 1, {kInputs}}, {2, 1, {kOutputs}}, {4, 1, {kCriteria}},
      {5, 3, {3, 2}}, {7, 3, {3, 5, 2}}, {8, 0, {}},         {6, 2, {5, 2}},
  };
  for (const auto& [flags, size, expected] : cases) {
    unsigned int dims[4] = {99, 99, 99, 99};
    EXPECT_EQ(dzel2_getDimensions(path_, flags, flags == 0 ? nullptr : dims, size), 0);
    for (std::size_t i = 0; i < 4; ++i)
      EXPECT_EQ(dims[i], i < expected.size() ? expected[i] : 99) << flags << ", " << i;
  }
  unsigned int n_inputs = 0;
  unsigned int n_outputs = 0;
  EXPECT_EQ(dzel_getDimensions(path_, &n_inputs, &n_outputs), 0);
  EXPECT_EQ(n_inputs, kInputs);
  EXPECT_EQ(n_outputs, kOutputs);
}

TEST_F(Query, DimensionsChecksItsArrayBeforeTheFile) {
  unsigned int dims[3] = {99, 99, 99};
  EXPECT_EQ(
      Answer(dzel2_getDimensions("/no/such/file", 3, dims, 1)),
      "41 Error in Zelsolver API: The preallocated uint array is too small. Is 1 and should be 2.");
  EXPECT_EQ(dims[0], 99u);
  EXPECT_EQ(dzel2_getDimensions("/no/such/file", 3, dims, 2), 2);
}

TEST_F(Query, NamesStandInOneBlock) {
  const std::string nul(1, '\0');
  for (const auto& [flag, names] : {std::pair(1u, inputs_), {2u, outputs_}, {4u, criteria_}}) {
    const unsigned int f = flag;
    EXPECT_EQ(Block([&](char** block) { return dzel2_getNames(path_, f, block); }),
              Joined(names, nul));
    for (const std::string delimiter : {"", ", ", "\xc2\xb7"})
      EXPECT_EQ(Block([&](char** block) {
                  return dzel2_getNamesWithDelimiter(path_, f, block, delimiter.c_str());
                }),
                Joined(names, delimiter.empty() ? nul : delimiter));
  }
  EXPECT_EQ(Block([&](char** block) { return dzel_getInputNames(path_, block); }),
            Joined(inputs_, nul));
  EXPECT_EQ(Block([&](char** block) { return dzel_getOutputNames(path_, block); }),
            Joined(outputs_, nul));
  EXPECT_EQ(
      Block([&](char** block) { return dzel_getInputNamesWithDelimiter(path_, block, "--"); }),
      Joined(inputs_, "--"));
  EXPECT_EQ(
      Block([&](char** block) { return dzel_getOutputNamesWithDelimiter(path_, block, nullptr); }),
      Joined(outputs_, nul));
}

TEST_F(Query, NamesTakesOneSelector) {
  char* names = nullptr;
  for (const unsigned int flag : {0u, 3u, 8u}) {
    EXPECT_EQ(Answer(dzel2_getNames(path_, flag, &names)),
              "41 Error in Zelsolver API: Invalid flag set for dzel_getNames.");
    EXPECT_EQ(names, nullptr);
  }
}

TEST_F(Query, BoundsAreThoseOfTheData) {
  const auto expected = ElementsAre(0.0, 2.0, -1.0, 1.0, 10.0, 20.0);
  double bounds[6];
  for (const auto get : {dzel2_getInputBounds, dzel_getInputBounds}) {
    std::fill(bounds, bounds + 6, 0.0);
    EXPECT_EQ(get(path_, bounds), 0);
    EXPECT_THAT(bounds, expected);
  }
  for (const auto get : {dzel2_getInputBoundsPerParameter, dzel_getInputBoundsPerParameter}) {
    double pair[2];
    EXPECT_EQ(get(path_, kThirdInput, pair), 0);
    EXPECT_THAT(pair, ElementsAre(10.0, 20.0));
    EXPECT_EQ(get(path_, "sum", pair), 0) << "no input, but in the data";
    EXPECT_THAT(pair, ElementsAre(-1.0, 3.0));
    EXPECT_NE(get(path_, "thickness", bounds), 0);
    EXPECT_EQ(LastError(), "No Limits for Parameter (thickness) found.");
  }
}

TEST_F(Query, ReferenceValues) {
  for (const auto get : {dzel2_getReferenceValuePerParameter, dzel_getReferenceValuePerParameter}) {
    double value = 0.0;
    EXPECT_EQ(get(path_, kThirdInput, &value), 0);
    EXPECT_EQ(value, 15.0);
    EXPECT_EQ(get(path_, "thickness", &value), 0) << "constant";
    EXPECT_EQ(value, 3.0);
    EXPECT_NE(get(path_, "w\xc3\xa4rme", &value), 0);
    EXPECT_EQ(LastError(), "Parameter (w\xc3\xa4rme) not found.");
    EXPECT_EQ(value, 3.0);
  }
}

TEST_F(Query, CoPAndFilteredStates) {
  const std::tuple<const char*, std::vector<double>, std::vector<unsigned int>> cases[] = {
      {"mass", {0.5, 0.3, 0.1, 0.9}, {0, 0, 0, 0}},
      {"flat", {0.9, -1.0, -1.0, 0.9}, {0, 1, 1, 0}},
      {"stress[2]", {0.5, 0.3, 0.1, -1.0}, {0, 0, 0, 1}},
  };
  for (const auto& [response, expected_cops, expected_states] : cases) {
    std::vector<double> cops(4);
    std::vector<unsigned int> states(4);
    for (const auto get : {dzel2_getCoPValuesPerResponse, dzel_getCoPValuesPerResponse}) {
      EXPECT_EQ(get(path_, response, cops.data()), 0);
      EXPECT_EQ(cops, expected_cops);
    }
    for (const auto get : {dzel2_getFilteredStatesPerResponse, dzel_getFilteredStatesPerResponse}) {
      EXPECT_EQ(get(path_, response, states.data()), 0);
      EXPECT_EQ(states, expected_states);
    }
    double* cop_buffer = nullptr;
    unsigned int* state_buffer = nullptr;
    EXPECT_EQ(dzel_allocate_and_getCoPValuesPerResponse(path_, response, &cop_buffer), 0);
    EXPECT_EQ(dzel_allocate_and_getFilteredStatesPerResponse(path_, response, &state_buffer), 0);
    EXPECT_TRUE(std::equal(cops.begin(), cops.end(), cop_buffer));
    EXPECT_TRUE(std::equal(states.begin(), states.end(), state_buffer));
  }
  double cops[4];
  unsigned int states[4];
  EXPECT_EQ(Answer(dzel2_getCoPValuesPerResponse(path_, "none", cops)),
            "2 Surrogate info with name \"none\" does not exist.");
  EXPECT_EQ(dzel_getFilteredStatesPerResponse(path_, "none", states), 1);
}

TEST_F(Query, BothKindsOfBoundsShareABuffer) {
  double* all = nullptr;
  ASSERT_EQ(dzel_allocate_and_getInputBounds(path_, &all), 0);
  EXPECT_EQ(all[5], 20.0);
  double* one = nullptr;
  ASSERT_EQ(dzel_allocate_and_getInputBoundsPerParameter(path_, "y", &one), 0);
  EXPECT_EQ(one[0], -1.0);
  EXPECT_EQ(one[1], 1.0);
  double* const before = one;
  EXPECT_EQ(dzel_allocate_and_getInputBoundsPerParameter(path_, "thickness", &one), 1);
  EXPECT_EQ(one, before) << "a failing call leaves the pointer as it was";
}

}  // namespace
}  // namespace end_to_end
