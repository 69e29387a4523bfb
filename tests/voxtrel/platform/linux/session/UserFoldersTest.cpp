#include <gtest/gtest.h>

#include "support/Variable.h"
#include "voxtrel/platform/linux/session/UserFolders.h"

namespace voxtrel {
namespace {

using testing::Variable;

TEST(UserFoldersTest, theSettingsFolderIsXdgConfigHomeIfAbsoluteElseInTheHome) {
  struct Row {
    const char* variable;
    const char* home;
    const char* expected;
  };
  const Row rows[] = {{nullptr, "/home/ada", "/home/ada/.config"},
                      {"", "/home/ada", "/home/ada/.config"},
                      {"relative", "/home/ada", "/home/ada/.config"},
                      {"/elsewhere", "/home/ada", "/elsewhere"},
                      {"/elsewhere/", "", "/elsewhere"},
                      {nullptr, "", ""}};
  for (const Row& row : rows) {
    const Variable variable("XDG_CONFIG_HOME", row.variable);
    EXPECT_EQ(configFolder(row.home), row.expected);
    EXPECT_EQ(desktopConfigFolder(row.home, false), row.expected);
  }
}

TEST(UserFoldersTest, inASandboxTheDesktopsFolderComesFromAnotherVariable) {
  const Variable own("XDG_CONFIG_HOME", "/sandbox");
  const Variable desktops("HOST_XDG_CONFIG_HOME", "/desktop");
  EXPECT_EQ(desktopConfigFolder("/home/ada", true), "/desktop");
  EXPECT_EQ(configFolder("/home/ada"), "/sandbox");
  const Variable none("HOST_XDG_CONFIG_HOME", nullptr);
  EXPECT_EQ(desktopConfigFolder("/home/ada", true), "/home/ada/.config");
}

}  // namespace
}  // namespace voxtrel
