#include <gtest/gtest.h>

#include "voxtrel/platform/linux/windows/FormText.h"

namespace voxtrel {
namespace {

TEST(ControlText, keepsAnAmpersandThatBelongsToTheText) {
  EXPECT_EQ(controlText("Save & Restart"), "Save && Restart");
}

TEST(ControlText, marksTheAccessKey) {
  EXPECT_EQ(controlText("Save & Restart", 'R'), "Save && &Restart");
  EXPECT_EQ(controlText("Input Language:", 'I'), "&Input Language:");
}

TEST(ControlText, marksOnlyTheFirstOfEqualLetters) {
  EXPECT_EQ(controlText("Retry Retry", 'R'), "&Retry Retry");
}

TEST(ControlText, leavesOutAKeyThatTheTextDoesNotHave) {
  EXPECT_EQ(controlText("Quit", 'X'), "Quit");
}

}  // namespace
}  // namespace voxtrel
