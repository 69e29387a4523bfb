#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "common/pulse/DefaultSource.h"
#include "common/pulse/RecordingStream.h"
#include "support/ScratchFolder.h"
#include "support/Variable.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Reason = RecordingFailure::Reason;
using testing::Variable;

/// A sound server's socket that takes connections and never replies.
class HungServer {
 public:
  explicit HungServer(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(socket_, 64), 0);  // each connection of a test has its place
  }
  HungServer(const HungServer&) = delete;
  HungServer& operator=(const HungServer&) = delete;
  ~HungServer() { ::close(socket_); }

 private:
  const int socket_;
};

struct RecordingStreamTest : ::testing::Test {
  RecordingOptions options() {
    RecordingOptions options;
    options.applicationName = "test";
    options.streamName = "test";
    options.onSamples = [](std::span<const float>, int) {};
    options.onFailure = [this](const RecordingFailure& failure) {
      const std::lock_guard lock(mutex);
      failures.push_back(failure);
      failedOn = std::this_thread::get_id();
      changed.notify_all();
    };
    return options;
  }

  bool waitForFailure() {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, 30s, [this] { return !failures.empty(); });
  }

  ScratchFolder folder;
  const std::string path = folder.path() / "server";
  const Variable server{"PULSE_SERVER", ("unix:" + path).c_str()};
  const Variable cookie{"PULSE_COOKIE", (folder.path() / "cookie").c_str()};
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<RecordingFailure> failures;
  std::thread::id failedOn;
};

TEST_F(RecordingStreamTest, FailsOnItsOwnThreadWithoutAServer) {
  const RecordingStream stream(options());
  ASSERT_TRUE(waitForFailure());
  EXPECT_EQ(failures[0].reason, Reason::noServer);
  EXPECT_EQ(failures[0].description, "Connection refused");
  EXPECT_NE(failedOn, std::this_thread::get_id());
}

TEST_F(RecordingStreamTest, FailsOnceWhenTheServerHangsLongerThanTheLimit) {
  const HungServer hung(path);
  RecordingOptions impatient = options();
  impatient.stallLimit = 200ms;
  const Clock::time_point start = Clock::now();
  const RecordingStream stream(std::move(impatient));
  ASSERT_TRUE(waitForFailure());
  EXPECT_GE(Clock::now() - start, 200ms);
  EXPECT_EQ(failures[0].reason, Reason::stalled);
  EXPECT_EQ(failures[0].description, "Timeout");
  std::this_thread::sleep_for(500ms);
  const std::lock_guard lock(mutex);
  EXPECT_EQ(failures.size(), 1U);
}

TEST_F(RecordingStreamTest, WaitsThreeSecondsByDefault) {
  EXPECT_EQ(options().stallLimit, 3s);
}

TEST_F(RecordingStreamTest, NeitherConstructorNorDestructorWaitsForAHungServer) {
  const HungServer hung(path);
  const Clock::time_point start = Clock::now();
  for (int round = 0; round < 10; ++round) const RecordingStream stream(options());
  EXPECT_LT(Clock::now() - start, 2s);
  EXPECT_TRUE(failures.empty());
}

struct SourceSearchTest : RecordingStreamTest {};

TEST_F(SourceSearchTest, SaysThatThereIsNoServer) {
  EXPECT_EQ(searchDefaultSource(30s), SourceSearch::noServer);
}

TEST_F(SourceSearchTest, SaysNothingOfAServerThatHangs) {
  const HungServer hung(path);
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(searchDefaultSource(200ms), SourceSearch::unknown);
  EXPECT_GE(Clock::now() - start, 200ms);
  EXPECT_LT(Clock::now() - start, 5s);
}

}  // namespace
}  // namespace voxtrel
