#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "quillback/settings/StateFile.h"
#include "support/ScratchFolder.h"
#include "support/Variable.h"

namespace voxtrel::quillback {
namespace {

TEST(StateFileTest, KeepsATextForTheNextStartAndFromOtherUsers) {
  const ScratchFolder scratch;
  const voxtrel::testing::Variable home("XDG_STATE_HOME", (scratch.path() / "state").c_str());
  EXPECT_EQ(StateFile("token").read(), std::nullopt);
  ASSERT_TRUE(StateFile("token").write("one"));
  ASSERT_TRUE(StateFile("token").write("two"));
  EXPECT_EQ(StateFile("token").read(), "two");
  struct stat facts {};
  ASSERT_EQ(::stat((scratch.path() / "state/quillback/token").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 07777, 0600U);
  ASSERT_EQ(::stat((scratch.path() / "state/quillback").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 07777, 0700U);
  StateFile("token").remove();
  EXPECT_FALSE(StateFile("token").exists());
}

TEST(StateFileTest, ALinkInItsPlaceIsReplacedAndNotFollowed) {
  const ScratchFolder scratch;
  const voxtrel::testing::Variable home("XDG_STATE_HOME", scratch.path().c_str());
  const auto other = scratch.write("other", "theirs");
  std::filesystem::create_directories(scratch.path() / "quillback");
  std::filesystem::create_symlink(other, scratch.path() / "quillback/token");
  EXPECT_EQ(StateFile("token").read(), std::nullopt);
  ASSERT_TRUE(StateFile("token").write("ours"));
  EXPECT_EQ(StateFile("token").read(), "ours");
  EXPECT_EQ(std::filesystem::file_size(other), 6U);
}

}  // namespace
}  // namespace voxtrel::quillback
