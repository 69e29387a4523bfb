#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <future>
#include <string>

#include "voxtrel/platform/posix/ChildTest.h"

namespace voxtrel {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr long kMemoryLimitKib = 32L * 1024;

/// Peak resident memory of the process since `forgetPeak`.
long peakKib() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kib = 0;
    if (word == "VmHWM:" && status >> kib) return kib;
  }
  return -1;
}

void forgetPeak() {
  std::ofstream("/proc/self/clear_refs") << 5;
}

class OutputTest : public ChildTest {
 protected:
  /// Runs `commands` and keeps only the size and the end of the output.
  void measure(const Words& commands) {
    ChildOptions options;
    options.executable = SCRIPTED_ENGINE;
    options.arguments = {"run"};
    options.arguments.insert(options.arguments.end(), commands.begin(), commands.end());
    options.onOutput = [this](std::string_view bytes) {
      size_ += bytes.size();
      largest_ = std::max(largest_, bytes.size());
      end_.append(bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), 64)));
      end_.erase(0, end_.size() - std::min<std::size_t>(end_.size(), 64));
    };
    options.onExit = [this](int status) { status_ = status; };
    forgetPeak();
    const long before = peakKib();
    ASSERT_GT(before, 0);
    const auto result = launcher_.start(std::move(options));
    ASSERT_TRUE(eventually([this] { return status_ >= 0; }, std::chrono::seconds(60)));
    growthKib_ = peakKib() - before;
  }

  std::size_t size_ = 0;     // written by the reading thread, read after the exit
  std::size_t largest_ = 0;  // likewise
  std::string end_;          // likewise
  std::atomic<int> status_ = -1;
  long growthKib_ = -1;
};

TEST_F(OutputTest, BothStreamsArriveInTheOrderOfWriting) {
  EXPECT_EQ(
      outputOf({"--print", "1", "--error", "2", "--print", "3", "--error", "4", "--exit", "0"}),
      "1\n2\n3\n4\n");
}

TEST_F(OutputTest, BytesThatAreNoUtf8ArriveAsTheyAre) {
  EXPECT_EQ(
      outputOf({"--write", R"(a\xff\xfe\xc3)", "--write", R"(\x28\xed\xa0\x80)", "--exit", "0"}),
      "a\xff\xfe\xc3\x28\xed\xa0\x80");
}

TEST_F(OutputTest, NulBytesArrive) {
  EXPECT_EQ(outputOf({"--write", R"(a\0b\0\0\n)", "--exit", "0"}), std::string("a\0b\0\0\n", 6));
}

TEST_F(OutputTest, AWriteArrivesAtOnceAndNotWithTheNext) {
  const StartedChild child = engine({"--split", "4 200", "--write", "Recording..."});
  ASSERT_TRUE(eventually([&] { return child.record->output() == "Reco"; }));
  ASSERT_TRUE(eventually([&] { return child.record->output() == "Recordin"; }));
  ASSERT_TRUE(eventually([&] { return child.record->output() == "Recording..."; }));
}

TEST_F(OutputTest, ManySmallWritesLoseNothing) {
  const std::string output = outputOf({"--split", "1 0", "--repeat", "500 cut", "--exit", "0"});
  std::string expected;
  for (int i = 0; i < 500; ++i) expected += "cut\n";
  EXPECT_EQ(output, expected);
}

TEST_F(OutputTest, AGibibyteClassFloodPassesInBoundedMemoryAndItsLastLineToo) {
  measure({"--flood", "1G", "--print", "the last line", "--exit", "3"});
  EXPECT_EQ(status_, 3);
  EXPECT_EQ(size_, 1'000'000'000 + std::string("the last line\n").size());
  EXPECT_TRUE(end_.ends_with("\nthe last line\n")) << end_;
  EXPECT_LE(largest_, 65536U);
  EXPECT_LT(growthKib_, kMemoryLimitKib);
  std::printf("  memory grew by %ld KiB\n", growthKib_);
}

TEST_F(OutputTest, ALineOfAHundredMegabytesPassesInBoundedMemory) {
  measure({"--long-line", "100M", "--exit", "0"});
  EXPECT_EQ(size_, 100'000'000U);
  EXPECT_LE(largest_, 65536U);
  EXPECT_LT(growthKib_, kMemoryLimitKib);
}

TEST_F(OutputTest, EverythingThatIsThereComesInOneRead) {
  std::promise<void> mayRead;
  std::atomic<int> reads = 0;
  std::string second;  // written by the reading thread, read after the exit
  std::atomic<bool> isDone = false;
  ChildOptions options;
  options.executable = SCRIPTED_ENGINE;
  options.arguments = {"run",      "--print",  "first",  "--sleep", "100",
                       "--repeat", "100 more", "--exit", "0"};
  options.onOutput = [&](std::string_view bytes) {
    if (++reads == 1) mayRead.get_future().wait();
    if (reads == 2) second = bytes;
  };
  options.onExit = [&](int) { isDone = true; };
  const auto result = launcher_.start(std::move(options));
  (*result)->waitUntilExit();
  mayRead.set_value();
  ASSERT_TRUE(eventually([&] { return isDone.load(); }));
  EXPECT_EQ(reads, 2);
  EXPECT_EQ(second.size(), 500U);
}

TEST_F(OutputTest, TheLastLinesComeBeforeTheExitEveryTime) {
  for (int i = 0; i < 200; ++i) {
    const StartedChild child = engine({"--print", "[quillback] Failed to load", "--exit", "1"});
    ASSERT_EQ(child.record->waitForStatus(), 1);
    ASSERT_EQ(child.record->output(), "[quillback] Failed to load\n");
    ASSERT_FALSE(child.record->isLate());
  }
}

TEST_F(OutputTest, TheLastLinesComeBeforeTheDeathBySignalToo) {
  for (int i = 0; i < 50; ++i) {
    const StartedChild child = engine({"--flood", "60k", "--print", "end", "--signal", "KILL"});
    ASSERT_EQ(child.record->waitForStatus(), 9);
    ASSERT_EQ(child.record->output().size(), 60'004U);
  }
}

TEST_F(OutputTest, AGrandchildThatKeepsTheOutputOpenDelaysNothing) {
  const auto begin = steady_clock::now();
  for (int i = 0; i < 20; ++i) {
    const StartedChild child = engine({"--grandchild", "8000", "--print", "last", "--exit", "1"});
    ASSERT_EQ(child.record->waitForStatus(), 1);
    ASSERT_EQ(child.record->output(), "last\n");
  }
  EXPECT_LT(steady_clock::now() - begin, milliseconds(6000));
}

TEST_F(OutputTest, AGrandchildThatFloodsTheOutputHidesNoLineAndDelaysNothing) {
  for (int i = 0; i < 20; ++i) {
    const auto begin = steady_clock::now();
    const StartedChild child = engine(
        {"--flooding-grandchild", "8000", "--sleep", "10", "--print", "LAST", "--exit", "1"});
    ASSERT_EQ(child.record->waitForStatus(), 1);
    ASSERT_TRUE(child.record->contains("LAST\n"));
    ASSERT_FALSE(child.record->isLate());
    ASSERT_LT(steady_clock::now() - begin, milliseconds(6000));
  }
}

TEST_F(OutputTest, AChildThatClosesItsOutputKeepsRunning) {
  const StartedChild child =
      engine({"--print", "silence", "--close-output", "--sleep", "100", "--exit", "5"});
  ASSERT_TRUE(eventually([&] { return child.record->contains("silence"); }));
  EXPECT_EQ(child.record->waitForStatus(), 5);
  EXPECT_EQ(child.record->output(), "silence\n");
}

TEST_F(OutputTest, NoListenerIsNeeded) {
  ChildOptions options;
  options.executable = SCRIPTED_ENGINE;
  options.arguments = {"run", "--flood", "1M", "--exit", "0"};
  const auto result = launcher_.start(std::move(options));
  (*result)->waitUntilExit();
}

}  // namespace
}  // namespace voxtrel
