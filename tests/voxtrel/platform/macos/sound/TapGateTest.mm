#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "voxtrel/platform/macos/sound/TapGate.h"

namespace voxtrel::testing {
namespace {

struct TapGateTest : ::testing::Test {
  MicrophoneTapOptions options() {
    MicrophoneTapOptions made;
    made.onBuffer = [this](const AudioBuffer& buffer) { frames.push_back(buffer.frameLength); };
    made.onFailure = [this](std::string description) { failures.push_back(description); };
    return made;
  }
  static AudioBuffer buffer(std::size_t frameLength) {
    AudioBuffer made;
    made.frameLength = frameLength;
    return made;
  }

  std::vector<std::size_t> frames;
  std::vector<std::string> failures;
};

TEST_F(TapGateTest, PassesBuffersUntilItIsClosed) {
  TapGate gate(options());
  gate.pass(buffer(1));
  gate.pass(buffer(2));
  gate.close();
  gate.pass(buffer(3));
  gate.fail("late");
  EXPECT_EQ(frames, (std::vector<std::size_t>{1, 2}));
  EXPECT_TRUE(failures.empty());
}

TEST_F(TapGateTest, ReportsOneFailureAndNoBuffersAfterIt) {
  TapGate gate(options());
  gate.pass(buffer(1));
  gate.fail("first");
  gate.fail("second");
  gate.pass(buffer(2));
  EXPECT_EQ(failures, std::vector<std::string>{"first"});
  EXPECT_EQ(frames, std::vector<std::size_t>{1});
}

TEST_F(TapGateTest, WaitsForACallThatRunsWhileItIsClosed) {
  std::atomic<bool> isInside = false;
  std::atomic<bool> mayLeave = false;
  std::atomic<bool> hasLeft = false;
  MicrophoneTapOptions slow;
  slow.onBuffer = [&](const AudioBuffer&) {
    isInside = true;
    isInside.notify_all();
    mayLeave.wait(false);
    hasLeft = true;
  };
  TapGate gate(std::move(slow));
  std::thread capture([&] { gate.pass(buffer(1)); });
  isInside.wait(false);
  std::thread owner([&] {
    gate.close();
    EXPECT_TRUE(hasLeft);
  });
  mayLeave = true;
  mayLeave.notify_all();
  owner.join();
  capture.join();
  EXPECT_TRUE(hasLeft);
}

}  // namespace
}  // namespace voxtrel::testing
