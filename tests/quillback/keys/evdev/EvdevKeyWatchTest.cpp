#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/input.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "common/posix/FileDescriptor.h"
#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "quillback/keys/evdev/LibevdevKeyboard.h"
#include "support/PollLoop.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNull;
using ::testing::NotNull;

constexpr int kLetGo = 0;
constexpr int kPressed = 1;
constexpr int kRepeated = 2;

/// Reads a pipe as the kernel's device would be read; the writer's end is the unplugging.
class PipedKeyboard final : public Keyboard {
 public:
  explicit PipedKeyboard(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  int descriptor() const override { return descriptor_.get(); }
  bool read(const OnKey& onKey) override {
    input_event event{};
    ssize_t size = 0;
    while ((size = ::read(descriptor_.get(), &event, sizeof event)) > 0) {
      if (event.type == EV_KEY && event.value != kRepeated)
        onKey(event.code, event.value == kPressed);
    }
    return size < 0 && errno == EAGAIN;
  }

 private:
  FileDescriptor descriptor_;
};

/// The other end of a keyboard's pipe.
class Plug {
 public:
  explicit Plug(fs::path path) : path_(std::move(path)) {
    mkfifo(path_.c_str(), 0600);
    end_ = FileDescriptor(::open(path_.c_str(), O_RDWR | O_CLOEXEC));
  }
  void key(std::uint16_t code, int value) const {
    input_event event{};
    event.type = EV_KEY;
    event.code = code;
    event.value = value;
    EXPECT_EQ(::write(end_.get(), &event, sizeof event), static_cast<ssize_t>(sizeof event));
  }
  void unplug() {
    end_ = FileDescriptor();
    fs::remove(path_);
  }
  /// The device breaks before its file goes.
  void breakOff() { end_ = FileDescriptor(); }

 private:
  fs::path path_;
  FileDescriptor end_;
};

class EvdevKeyWatchTest : public ::testing::Test {
 protected:
  static constexpr milliseconds kQuiet{30};

  EvdevKeyWatchTest() {
    std::string name = (fs::temp_directory_path() / "quillback-input-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder");
    folder_ = name;
  }
  ~EvdevKeyWatchTest() override { fs::remove_all(folder_); }

  EvdevKeyWatch::Opened open(std::string_view name = "f5", const std::string& folder = "") {
    return EvdevKeyWatch::open(
        *hotkeyNamed(name),
        {.onPressed = [this] { heard_.emplace_back("pressed"); },
         .onReleased = [this] { heard_.emplace_back("released"); },
         .onCancelled = [this] { heard_.emplace_back("cancelled"); }},
        loop_, [this](const std::string& path, int) { return openPipe(path); },
        folder.empty() ? folder_.string() : folder);
  }
  KeyboardFile openPipe(const std::string& path) {
    if (refused_.contains(path)) return {nullptr, true};
    FileDescriptor pipe(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!pipe.isOpen() || fstat(pipe.get(), &status) != 0 || !S_ISFIFO(status.st_mode)) return {};
    return {std::make_unique<PipedKeyboard>(std::move(pipe)), false};
  }
  Plug plug(const std::string& name) { return Plug(folder_ / name); }
  void settle() { loop_.runFor(kQuiet); }

  test::PollLoop loop_;
  fs::path folder_;
  std::set<std::string> refused_;
  std::vector<std::string> heard_;
};

TEST_F(EvdevKeyWatchTest, AKeyHeldWithRepeatsIsOnePressAndOneRelease) {
  const Plug keyboard = plug("event0");
  const auto [watch, why] = open();
  ASSERT_THAT(watch, NotNull()) << why;
  keyboard.key(KEY_F5, kPressed);
  keyboard.key(KEY_F5, kRepeated);
  keyboard.key(KEY_F5, kRepeated);
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed"));
  keyboard.key(KEY_F5, kLetGo);
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed", "released"));
}

TEST_F(EvdevKeyWatchTest, EscapeCancelsAndOtherKeysDoNothing) {
  const Plug keyboard = plug("event0");
  const auto opened = open("right_cmd");
  keyboard.key(KEY_RIGHTMETA, kPressed);
  keyboard.key(KEY_A, kPressed);
  keyboard.key(KEY_A, kLetGo);
  keyboard.key(KEY_ESC, kPressed);
  keyboard.key(KEY_ESC, kLetGo);
  keyboard.key(KEY_RIGHTMETA, kLetGo);
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed", "cancelled", "released"));
}

TEST_F(EvdevKeyWatchTest, TheBackslashKeyNeedsShift) {
  const Plug keyboard = plug("event0");
  const auto opened = open("shift+\\");
  keyboard.key(KEY_BACKSLASH, kPressed);
  keyboard.key(KEY_BACKSLASH, kLetGo);
  settle();
  EXPECT_THAT(heard_, IsEmpty());
  keyboard.key(KEY_RIGHTSHIFT, kPressed);
  keyboard.key(KEY_BACKSLASH, kPressed);
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed"));
}

TEST_F(EvdevKeyWatchTest, AKeyboardPluggedInLaterIsHeard) {
  const auto [watch, why] = open();
  ASSERT_THAT(watch, NotNull()) << why;
  EXPECT_EQ(watch->keyboardCount(), 0u);
  const Plug keyboard = plug("event7");
  settle();
  EXPECT_EQ(watch->keyboardCount(), 1u);
  keyboard.key(KEY_F5, kPressed);
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed"));
}

TEST_F(EvdevKeyWatchTest, AKeyboardUnpluggedWithTheKeyHeldLetsGoOfItOnce) {
  Plug keyboard = plug("event0");
  const auto opened = open();
  keyboard.key(KEY_F5, kPressed);
  settle();
  keyboard.unplug();
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed", "released"));
  EXPECT_EQ(opened.watch->keyboardCount(), 0u);
  const Plug again = plug("event0");
  settle();
  again.key(KEY_F5, kPressed);
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed", "released", "pressed"));
}

TEST_F(EvdevKeyWatchTest, ABrokenKeyboardIsDroppedBeforeItsFileGoes) {
  Plug keyboard = plug("event0");
  const auto opened = open();
  keyboard.key(KEY_F5, kPressed);
  settle();
  keyboard.breakOff();
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed", "released"));
  EXPECT_EQ(opened.watch->keyboardCount(), 0u);
}

TEST_F(EvdevKeyWatchTest, TheKeyHeldOnTwoKeyboardsCountsOnce) {
  const Plug first = plug("event0");
  Plug second = plug("event1");
  const auto opened = open();
  first.key(KEY_F5, kPressed);
  settle();
  second.key(KEY_F5, kPressed);
  settle();
  first.key(KEY_F5, kLetGo);
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed"));
  second.unplug();
  settle();
  EXPECT_THAT(heard_, ElementsAre("pressed", "released"));
}

TEST_F(EvdevKeyWatchTest, AKeyboardWhoseRightsComeLateIsHeardOnceItMayBeRead) {
  refused_.insert(folder_ / "event3");
  const Plug other = plug("event1");
  const auto opened = open();
  const Plug keyboard = plug("event3");
  settle();
  EXPECT_EQ(opened.watch->keyboardCount(), 1u);
  refused_.clear();
  fs::permissions(folder_ / "event3", fs::perms::owner_all);
  settle();
  EXPECT_EQ(opened.watch->keyboardCount(), 2u);
}

TEST_F(EvdevKeyWatchTest, WhereNoKeyboardMayBeReadTheReasonIsSaid) {
  const Plug keyboard = plug("event0");
  refused_.insert(folder_ / "event0");
  const auto [watch, why] = open();
  EXPECT_THAT(watch, IsNull());
  EXPECT_THAT(why, ::testing::HasSubstr("members of their group"));
  const auto nowhere = open("f5", folder_ / "missing");
  EXPECT_THAT(nowhere.watch, IsNull());
  EXPECT_THAT(nowhere.why, ::testing::StartsWith("there is no folder"));
}

TEST_F(EvdevKeyWatchTest, FilesThatAreNoKeyboardsAreLeftAlone) {
  std::ofstream(folder_ / "event0") << "text";
  const Plug mouse = plug("mouse0");
  const auto [watch, why] = open();
  ASSERT_THAT(watch, NotNull()) << why;
  EXPECT_EQ(watch->keyboardCount(), 0u);
}

TEST_F(EvdevKeyWatchTest, AHundredPluggingsLeaveNoDescriptorBehind) {
  const auto opened = open();
  const auto count = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  };
  const auto before = count();
  for (int i = 0; i < 100; ++i) {
    Plug keyboard = plug("event" + std::to_string(i));
    loop_.runFor(milliseconds(1));
    keyboard.unplug();
    loop_.runFor(milliseconds(1));
  }
  EXPECT_EQ(opened.watch->keyboardCount(), 0u);
  EXPECT_EQ(count(), before);
}

TEST_F(EvdevKeyWatchTest, TheKernelsLibraryTakesOnlyRealDevices) {
  const Plug pipe = plug("event0");
  std::ofstream(folder_ / "event1") << "text";
  for (const char* name : {"event0", "event1", "missing"}) {
    const KeyboardFile file = LibevdevKeyboard::open(folder_ / name, KEY_F5);
    EXPECT_THAT(file.keyboard, IsNull()) << name;
    EXPECT_FALSE(file.isRefused) << name;
  }
}

}  // namespace
}  // namespace voxtrel::quillback
