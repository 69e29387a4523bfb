#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <thread>

#include "quillback/recognition/process/RecogniserProcess.h"
#include "support/RealSpeech.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::HasSubstr;

/// Takes that are dropped while the published weights are at work on them, in the process of the engine's
/// own program.
struct DroppedTakes : RealSpeech {
  void SetUp() override {
    RealSpeech::SetUp();
    if (folder().empty()) return;
    ASSERT_TRUE(process_.load().isUsable);
    longTake_ = recording("es_veneno_long").samples;
  }

  /// The process that this thread has started.
  static pid_t child() {
    std::ifstream file("/proc/thread-self/children");
    pid_t id = 0;
    file >> id;
    return id;
  }

  /// The processor's time that it has used.
  static double usedSeconds(pid_t id) {
    clockid_t clock{};
    timespec used{};
    if (::clock_getcpuclockid(id, &clock) != 0 || ::clock_gettime(clock, &used) != 0) return 0;
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
  }

  /// Starts to recognise the long take and drops it while the first piece is computed; how long it takes
  /// until the recogniser has left it.
  milliseconds dropWhileItComputes() {
    constexpr double kAtWork = 0.3;
    isDropped_ = false;
    process_.begin(isDropped_);
    process_.feed(longTake_);
    const double before = usedSeconds(child());
    steady_clock::time_point droppedAt;
    const std::jthread user([this, id = child(), before, &droppedAt](const std::stop_token& stop) {
      while (!stop.stop_requested() && usedSeconds(id) < before + kAtWork) {
        std::this_thread::sleep_for(milliseconds(1));
      }
      droppedAt = steady_clock::now();
      isDropped_ = true;
    });
    EXPECT_EQ(process_.finish().text, "") << "it was recognised before it could be dropped";
    process_.drop();
    return std::chrono::ceil<milliseconds>(steady_clock::now() - droppedAt);
  }

  std::string next(const char* name) {
    isDropped_ = false;
    process_.begin(isDropped_);
    process_.feed(recording(name).samples);
    return process_.finish().text;
  }

  RecogniserProcess process_{
      {QUILLBACK, "recognise", "file", "whisper", folder() + "/ggml-base.bin"}, nullptr};
  Samples longTake_;
  std::atomic<bool> isDropped_{false};
};

TEST_F(DroppedTakes, ARecognitionThatRunsIsLeftAndTheNextTakeIsWhole) {
  // Where nothing else computes: within 0.3 s. The long take would need several seconds.
  constexpr milliseconds kGenerous{2000};
  const milliseconds left = dropWhileItComputes();
  RecordProperty("milliseconds", static_cast<int>(left.count()));
  std::printf("left after %d ms\n", static_cast<int>(left.count()));
  EXPECT_LT(left, kGenerous);
  EXPECT_THAT(next("en_goforward"), HasSubstr("meters"));
}

TEST_F(DroppedTakes, AfterSeveralInARowTheNextTakeIsWhole) {
  for (int at = 0; at < 3; ++at) dropWhileItComputes();
  EXPECT_THAT(next("en_goforward"), HasSubstr("meters"));
}

}  // namespace
}  // namespace voxtrel::quillback
