#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <initializer_list>

#include "common/posix/FileDescriptor.h"
#include "support/OrdinaryUser.h"
#include "support/ScratchFolder.h"
#include "voxtrel/platform/linux/permissions/KeyboardNodes.h"

namespace voxtrel {
namespace {

using testing::OrdinaryUser;

void set(KeyBits& keys, unsigned key) {
  keys.at(key / 8) = static_cast<unsigned char>(keys.at(key / 8) | 1U << (key % 8));
}

KeyBits everyLetter() {
  KeyBits keys{};
  for (unsigned key = KEY_Q; key <= KEY_P; ++key) set(keys, key);
  for (unsigned key = KEY_A; key <= KEY_L; ++key) set(keys, key);
  for (unsigned key = KEY_Z; key <= KEY_M; ++key) set(keys, key);
  return keys;
}

TEST(KeyBitsTest, aKeyboardHasAllTwentySixLetters) {
  EXPECT_TRUE(hasAllLetters(everyLetter()));
  KeyBits full{};
  full.fill(0xff);
  EXPECT_TRUE(hasAllLetters(full));
}

TEST(KeyBitsTest, aDeviceWithoutOneOfThemIsNoKeyboard) {
  const KeyBits letters = everyLetter();
  for (unsigned key = KEY_Q; key <= KEY_M; ++key) {
    KeyBits keys = letters;
    keys.at(key / 8) = static_cast<unsigned char>(keys.at(key / 8) & ~(1U << (key % 8)));
    EXPECT_TRUE(keys == letters || !hasAllLetters(keys)) << key;
  }
}

TEST(KeyBitsTest, powerButtonsMiceAndHeadsetsAreNoKeyboards) {
  KeyBits keys{};
  EXPECT_FALSE(hasAllLetters(keys));
  for (const unsigned key :
       std::initializer_list<unsigned>{KEY_POWER, BTN_LEFT, KEY_VOLUMEUP, KEY_ENTER})
    set(keys, key);
  EXPECT_FALSE(hasAllLetters(keys));
}

TEST(KeyBitsTest, aFileThatIsNoInputDeviceIsNoKeyboard) {
  const FileDescriptor file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(file.isOpen());
  EXPECT_FALSE(isKeyboard(file.get()));
}

struct InputFolderFixture : ::testing::Test {
  bool isReadable(bool areKeyboards = true) {
    opened = 0;
    return canReadKeyboard(folder.path().string(), [&](int descriptor) {
      ++opened;
      EXPECT_GE(::fcntl(descriptor, F_GETFD), 0);
      last = descriptor;
      return areKeyboards;
    });
  }
  ScratchFolder folder;
  OrdinaryUser ordinaryUser{folder.path()};
  int opened = 0;
  int last = -1;
};

TEST_F(InputFolderFixture, emptyOrMissingItHasNoKeyboard) {
  EXPECT_FALSE(isReadable());
  EXPECT_FALSE(canReadKeyboard((folder.path() / "missing").string(), [](int) { return true; }));
}

TEST_F(InputFolderFixture, aReadableNodeThatIsAKeyboardIsFound) {
  folder.write("event3", "");
  EXPECT_TRUE(isReadable());
}

TEST_F(InputFolderFixture, everyNodeIsTriedUntilOneIsAKeyboard) {
  for (const char* node : {"event0", "event1", "event2"}) folder.write(node, "");
  EXPECT_FALSE(isReadable(false));
  EXPECT_EQ(opened, 3);
}

TEST_F(InputFolderFixture, aNodeThatMayNotBeReadIsSkipped) {
  ::chmod(folder.write("event0", "").c_str(), 0);
  EXPECT_FALSE(isReadable());
  EXPECT_EQ(opened, 0);
}

TEST_F(InputFolderFixture, onlyEventNodesAreTried) {
  for (const char* node : {"mouse0", "js0", "mice"}) folder.write(node, "");
  EXPECT_FALSE(isReadable());
}

TEST_F(InputFolderFixture, aPipeWithoutAWriterDoesNotBlock) {
  ASSERT_EQ(::mkfifo((folder.path() / "event0").c_str(), 0600), 0);
  EXPECT_TRUE(isReadable());
}

TEST_F(InputFolderFixture, everyNodeIsClosedAgain) {
  folder.write("event0", "");
  isReadable();
  EXPECT_EQ(::fcntl(last, F_GETFD), -1);
}

}  // namespace
}  // namespace voxtrel
