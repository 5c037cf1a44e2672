#include "foundation/environment.h"

#include "foundation/exception.h"
#include "support/message_of.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace corvath::utils {
namespace {

/// The variables that decide, set for one test and restored after it.
class Environment : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : kNames) {
      const char* value = std::getenv(name);
      if (value != nullptr) saved_.emplace_back(name, value);
      unsetenv(name);
    }
  }
  void TearDown() override {
    for (const char* name : kNames) unsetenv(name);
    for (const auto& [name, value] : saved_) setenv(name.c_str(), value.c_str(), 1);
  }

 private:
  static constexpr const char* kNames[] = {"LOCALAPPDATA", "APPDATA", "XDG_DATA_HOME",
                                           "XDG_CONFIG_HOME", "HOME"};
  std::vector<std::pair<std::string, std::string>> saved_;
};

TEST_F(Environment, AppDataPathFollowsTheVariablesInTheirOrder) {
  EXPECT_EQ(support::MessageOf([] { GetAppDataPath(1); }),
            "Environment variable \"APPDATA\" doesn't exist.");
  setenv("HOME", "/home/u", 1);
  EXPECT_EQ(GetAppDataPath(0), L"/home/u/.local/share");
  EXPECT_EQ(GetAppDataPath(1), L"/home/u/.config");
  setenv("XDG_CONFIG_HOME", "relative", 1);  // not absolute: ignored
  EXPECT_EQ(GetAppDataPath(1), L"/home/u/.config");
  setenv("XDG_CONFIG_HOME", "/c\xc3\xb6nf", 1);
  EXPECT_EQ(GetAppDataPath(1), L"/c\u00f6nf");
  setenv("LOCALAPPDATA", "C:/local", 1);
  EXPECT_EQ(GetAppDataPath(0), L"C:/local");
  EXPECT_EQ(support::MessageOf([] { GetAppDataPath(2); }),
            "GetAppDataPath: unknown location requested");
}

TEST_F(Environment, AMissingVariableIsNamed) {
  EXPECT_EQ(support::MessageOf([] { GetEnvironmentValue(L"NO_SUCH_ONE"); }),
            "Environment variable \"NO_SUCH_ONE\" doesn't exist.");
}

}  // namespace
}  // namespace corvath::utils
