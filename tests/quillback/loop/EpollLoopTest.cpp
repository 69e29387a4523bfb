#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "quillback/loop/EpollLoop.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

class EpollLoopTest : public testing::Test {
 protected:
  Loop::Task note(int number) {
    return [this, number] { noted_.push_back(number); };
  }
  Loop::Task end() {
    return [this] { loop_.stop(); };
  }

  EpollLoop loop_;
  std::vector<int> noted_;
};

/// Whether the kernel would wake this process by a timer descriptor.
bool isAnAlarmSet() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
    std::ifstream info(entry.path());
    for (std::string line; std::getline(info, line);) {
      if (line.starts_with("it_value:")) return line != "it_value: (0, 0)";
    }
  }
  return false;
}

TEST_F(EpollLoopTest, ATimerThatIsGoneLeavesNoAlarm) {
  auto timer = loop_.after(std::chrono::hours(1), note(0));
  EXPECT_TRUE(isAnAlarmSet());
  timer.reset();
  bool isSet = true;
  loop_.post([this, &isSet] {
    isSet = isAnAlarmSet();
    loop_.stop();
  });
  loop_.run();
  EXPECT_FALSE(isSet);
}

TEST_F(EpollLoopTest, RunsTasksInTheirOrder) {
  for (int i = 0; i < 3; ++i) loop_.post(note(i));
  loop_.post(end());
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(0, 1, 2));
}

TEST_F(EpollLoopTest, RunsWhatATaskPostsAfterEverythingPostedBefore) {
  loop_.post([this] {
    note(0)();
    loop_.post(note(2));
    loop_.post(end());
  });
  loop_.post(note(1));
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(0, 1, 2));
}

TEST_F(EpollLoopTest, TakesTasksFromOtherThreads) {
  constexpr int kCount = 10'000;
  std::thread other([this] {
    for (int i = 0; i < kCount; ++i) loop_.post(note(i));
    loop_.post(end());
  });
  loop_.run();
  other.join();
  ASSERT_EQ(noted_.size(), static_cast<std::size_t>(kCount));
  EXPECT_TRUE(std::ranges::is_sorted(noted_));
}

TEST_F(EpollLoopTest, RunsTimersInTheOrderOfTheirTimesAndNeverEarly) {
  const auto begun = loop_.now();
  const auto late = loop_.after(milliseconds(20), [this, begun] {
    note(2)();
    EXPECT_GE(loop_.now() - begun, milliseconds(20));
    loop_.stop();
  });
  const auto early = loop_.after(milliseconds(5), note(1));
  const auto now = loop_.after(milliseconds(0), note(0));
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(0, 1, 2));
}

TEST_F(EpollLoopTest, ATimerThatIsGoneDoesNotRun) {
  auto gone = loop_.after(milliseconds(1), note(1));
  const auto last = loop_.after(milliseconds(10), end());
  gone.reset();
  loop_.run();
  EXPECT_THAT(noted_, testing::IsEmpty());
}

TEST_F(EpollLoopTest, ATimerMayDestroyItselfAndMakeAnother) {
  std::unique_ptr<Loop::Timer> timer;
  timer = loop_.after(milliseconds(1), [&] {
    timer = loop_.after(milliseconds(1), [&] {
      timer.reset();
      loop_.stop();
    });
  });
  loop_.run();
  EXPECT_EQ(timer, nullptr);
}

TEST_F(EpollLoopTest, WatchesADescriptorUntilTheWatchIsGone) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const FileDescriptor from(ends[0]);
  const FileDescriptor to(ends[1]);
  std::unique_ptr<Loop::Watch> watch = loop_.watch(from.get(), [&] {
    char byte = 0;
    EXPECT_EQ(::read(from.get(), &byte, 1), 1);
    noted_.push_back(byte);
    if (byte == 'b') watch.reset();
  });
  ASSERT_EQ(::write(to.get(), "abc", 3), 3);
  const auto timer = loop_.after(milliseconds(20), end());
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre('a', 'b'));
}

TEST_F(EpollLoopTest, StopEndsItWithTasksLeft) {
  loop_.post(end());
  loop_.post(note(1));
  loop_.run();
  EXPECT_THAT(noted_, testing::IsEmpty());
}

}  // namespace
}  // namespace voxtrel::quillback
