#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <thread>

#include "quillback/loop/LineOutput.h"

namespace voxtrel::quillback {
namespace {

/// A pipe or a pair of sockets; the first end is read.
struct Ends {
  FileDescriptor from;
  FileDescriptor to;
};

Ends pipeEnds() {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) < 0) return {};
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

Ends socketEnds() {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) < 0) return {};
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

std::string readSome(const Ends& ends) {
  std::array<char, 65536> bytes{};
  const ssize_t count = ::read(ends.from.get(), bytes.data(), bytes.size());
  return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

std::string readAll(const Ends& ends, std::size_t size) {
  std::string all;
  while (all.size() < size) all += readSome(ends);
  return all;
}

/// Waits some seconds until so many bytes can be read; returns whether they can.
bool hasArrived(const Ends& ends, int bytes) {
  for (int look = 0; look < 5000; ++look) {
    int waiting = 0;
    if (::ioctl(ends.from.get(), FIONREAD, &waiting) == 0 && waiting >= bytes) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

TEST(LineOutput, WritesALineAtOnceAndInOnePiece) {
  const Ends ends = pipeEnds();
  LineOutput output(ends.to.get());
  output.print("Recording...");
  EXPECT_EQ(readSome(ends), "Recording...\n");
  const std::string longLine(50'000, 'x');
  output.print(longLine);
  EXPECT_EQ(readSome(ends), longLine + "\n");
}

TEST(LineOutput, PrintsOneLineWhateverTheText) {
  const Ends ends = pipeEnds();
  LineOutput output(ends.to.get());
  output.print("a\nb\r\nc");
  EXPECT_EQ(readSome(ends), "a b  c\n");
}

TEST(LineOutput, LinesOfSeveralThreadsNeverMix) {
  const Ends ends = pipeEnds();
  LineOutput output(ends.to.get());
  const std::string one(300, 'a');
  const std::string two(300, 'b');
  constexpr std::size_t kLines = 500;
  const auto printMany = [&output](const std::string& line) {
    for (std::size_t i = 0; i < kLines; ++i) output.print(line);
  };
  std::thread first(printMany, one);
  std::thread second(printMany, two);
  const std::string all = readAll(ends, 2 * kLines * 301);
  first.join();
  second.join();
  std::ptrdiff_t ones = 0;
  for (std::size_t at = 0; at < all.size(); at += 301) {
    const std::string line = all.substr(at, 300);
    ASSERT_TRUE(line == one || line == two) << at;
    ones += line == one ? 1 : 0;
  }
  EXPECT_EQ(ones, static_cast<std::ptrdiff_t>(kLines));
}

class ABlockedReader : public testing::TestWithParam<Ends (*)()> {};

TEST_P(ABlockedReader, BlocksNoPrinterAndGetsEverythingInTheEnd) {
  const Ends ends = GetParam()();
  LineOutput output(ends.to.get());
  const std::string line(999, 'x');
  constexpr std::size_t kLines = 1000;  // far more than the kernel buffers
  for (std::size_t i = 0; i < kLines; ++i) output.print(line);
  const std::string all = readAll(ends, kLines * 1000);
  EXPECT_EQ(all.substr(0, 1000), line + "\n");
  EXPECT_EQ(std::ranges::count(all, '\n'), static_cast<std::ptrdiff_t>(kLines));
  output.print("again");
  EXPECT_EQ(readAll(ends, 6), "again\n");
}

TEST_P(ABlockedReader, DoesNotKeepTheOutputFromEnding) {
  const Ends ends = GetParam()();
  LineOutput output(ends.to.get());
  for (int i = 0; i < 10'000; ++i) output.print(std::string(999, 'x'));  // more than is kept
  // Makes room for some of the waiting bytes, but not for all.
  for (int i = 0; i < 4; ++i) EXPECT_FALSE(readSome(ends).empty());
  ASSERT_TRUE(hasArrived(ends, 4096));
  for (int i = 0; i < 10'000; ++i) output.print("y");
}

INSTANTIATE_TEST_SUITE_P(OfAPipe, ABlockedReader, testing::Values(pipeEnds));
INSTANTIATE_TEST_SUITE_P(OfASocket, ABlockedReader, testing::Values(socketEnds));

TEST(LineOutput, LeavesTheHandedDownDescriptorBlocking) {
  const Ends ends = pipeEnds();
  const LineOutput output(ends.to.get());
  EXPECT_EQ(::fcntl(ends.to.get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST(LineOutput, SurvivesAReaderThatHasGone) {
  std::signal(SIGPIPE, SIG_IGN);
  Ends ends = pipeEnds();
  LineOutput output(ends.to.get());
  ends.from = FileDescriptor();
  output.print("unread");
  output.print("unread");
}

TEST(LineOutput, KnowsWhetherLinesWereLost) {
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  LineOutput output(full.get());
  EXPECT_FALSE(output.hasLostLines());
  output.print("too much");
  EXPECT_TRUE(output.hasLostLines());
  const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  LineOutput good(nowhere.get());
  good.print("fine");
  EXPECT_FALSE(good.hasLostLines());
}

TEST(LineOutput, SurvivesAClosedDescriptor) {
  LineOutput output(-1);
  output.print("unread");
}

}  // namespace
}  // namespace voxtrel::quillback
