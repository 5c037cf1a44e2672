#include "foundation/environment.h"

#include "foundation/exception.h"
#include "support/environment_variables.h"
#include "support/testing.h"

namespace corvath::utils {
namespace {

TEST(Environment, AppDataPathFollowsTheVariablesInTheirOrder) {
  const support::UserDirectoryVariables variables;
  EXPECT_MESSAGE("Environment variable \"APPDATA\" doesn't exist.", GetAppDataPath(1));
  setenv("HOME", "/home/u", 1);
  EXPECT_EQ(GetAppDataPath(0), L"/home/u/.local/share");
  EXPECT_EQ(GetAppDataPath(1), L"/home/u/.config");
  setenv("APPDATA", "", 1);
  EXPECT_EQ(GetAppDataPath(1), L"/home/u/.config");
  setenv("XDG_CONFIG_HOME", "relative", 1);  // not absolute: ignored
  EXPECT_EQ(GetAppDataPath(1), L"/home/u/.config");
  setenv("XDG_CONFIG_HOME", "/c\xc3\xb6nf", 1);
  EXPECT_EQ(GetAppDataPath(1), L"/c\u00f6nf");
  setenv("LOCALAPPDATA", "C:/local", 1);
  EXPECT_EQ(GetAppDataPath(0), L"C:/local");
  EXPECT_MESSAGE("GetAppDataPath: unknown location requested", GetAppDataPath(2));
}

}  // namespace
}  // namespace corvath::utils
