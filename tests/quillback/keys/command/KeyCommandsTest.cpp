#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <optional>
#include <thread>

#include "quillback/keys/SharedKey.h"
#include "quillback/keys/command/KeyCommands.h"
#include "support/PollLoop.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using Reply = tl::expected<std::string, std::string>;

struct KeyCommandsTest : testing::Test {
  KeyWatch::Listener listener() {
    return {[this] { events.emplace_back("pressed"); }, [this] { events.emplace_back("released"); },
            [this] { events.emplace_back("cancelled"); }};
  }
  std::unique_ptr<KeyCommands> open() {
    return KeyCommands::open(
        path, listener(),
        {[this] { events.emplace_back("used"); }, [] { return std::string("key: yes"); }}, loop);
  }
  /// The client waits, so it has a thread of its own.
  Reply send(std::string_view word) {
    std::optional<Reply> reply;
    std::atomic<bool> isDone = false;
    std::thread client([&] {
      reply = sendKeyCommand(path, word);
      isDone = true;
    });
    while (!isDone) loop.runFor(milliseconds(1));
    client.join();
    return *reply;
  }
  /// A client that connects and sends nothing.
  FileDescriptor connectSilently() const {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    const void* generic = &address;
    EXPECT_EQ(::connect(socket.get(), static_cast<const sockaddr*>(generic), sizeof address), 0);
    return socket;
  }

  ScratchFolder scratch;
  std::string path = (scratch.path() / "key").string();
  test::PollLoop loop;
  std::vector<std::string> events;
};

TEST_F(KeyCommandsTest, PressAndReleaseAreTheKeys) {
  const auto commands = open();
  ASSERT_TRUE(commands);
  EXPECT_EQ(send(kKeyPress), "ok");
  EXPECT_THAT(events, ElementsAre("used", "pressed"));
  EXPECT_EQ(send(kKeyPress), "ok");
  EXPECT_EQ(send(kKeyRelease), "ok");
  EXPECT_EQ(send(kKeyRelease), "ok");
  EXPECT_THAT(events, ElementsAre("used", "pressed", "released"));
}

TEST_F(KeyCommandsTest, ToggleDoesWhatThePressOrTheReleaseWould) {
  const auto commands = open();
  EXPECT_EQ(send(kKeyToggle), "ok");
  EXPECT_EQ(send(kKeyToggle), "ok");
  EXPECT_EQ(send(kKeyPress), "ok");
  EXPECT_EQ(send(kKeyToggle), "ok");
  EXPECT_THAT(events, ElementsAre("used", "pressed", "released", "used", "pressed", "released"));
}

TEST_F(KeyCommandsTest, AnotherWordDoesNothing) {
  const auto commands = open();
  EXPECT_EQ(send("walk"), "unknown command");
  EXPECT_EQ(send(std::string(5000, 'x')), "unknown command");
  EXPECT_EQ(send(kKeyStatus), "key: yes");
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(KeyCommandsTest, OnlyThisUserMayUseTheSocket) {
  const auto commands = open();
  struct stat facts {};
  ASSERT_EQ(::stat(path.c_str(), &facts), 0);
  EXPECT_TRUE(S_ISSOCK(facts.st_mode));
  EXPECT_EQ(facts.st_mode & 07777, 0600U);
}

TEST_F(KeyCommandsTest, WithoutAnEngineTheClientSaysSo) {
  EXPECT_EQ(sendKeyCommand(path, kKeyPress), tl::unexpected(std::string("no engine is running")));
  { const auto commands = open(); }
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(sendKeyCommand(path, kKeyPress));
}

TEST_F(KeyCommandsTest, ASocketThatAnEngineLeftBehindIsReplaced) {
  std::filesystem::create_directory(scratch.path() / "old");
  scratch.write("key", "left behind");
  const auto commands = open();
  ASSERT_TRUE(commands);
  EXPECT_EQ(send(kKeyToggle), "ok");
}

TEST_F(KeyCommandsTest, SilentClientsDoNotKeepOthersOut) {
  const auto commands = open();
  std::vector<FileDescriptor> silent;
  for (int i = 0; i < 30; ++i) {
    silent.push_back(connectSilently());
    loop.runFor(milliseconds(0));
  }
  EXPECT_EQ(send(kKeyPress), "ok");
  EXPECT_THAT(events, ElementsAre("used", "pressed"));
}

TEST_F(KeyCommandsTest, APathThatIsTooLongForASocketIsNoSocket) {
  path = (scratch.path() / std::string(120, 'x')).string();
  EXPECT_FALSE(open());
  EXPECT_FALSE(sendKeyCommand(path, kKeyPress));
}

TEST_F(KeyCommandsTest, AKeyWithSeveralSourcesIsPressedWhileOneHoldsIt) {
  SharedKey shared(listener());
  const KeyWatch::Listener one = shared.addSource();
  const KeyWatch::Listener other = shared.addSource();
  one.onPressed();
  other.onPressed();
  one.onReleased();
  one.onCancelled();
  EXPECT_THAT(events, ElementsAre("pressed"));
  other.onCancelled();
  other.onReleased();
  other.onReleased();
  EXPECT_THAT(events, ElementsAre("pressed", "cancelled", "released"));
}

}  // namespace
}  // namespace voxtrel::quillback
