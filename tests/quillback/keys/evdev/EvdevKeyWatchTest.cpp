#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include "common/posix/FileDescriptor.h"
#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "support/PollLoop.h"
#include "support/ScratchFolder.h"

namespace {

/// Whether each FIFO looks to libevdev like a keyboard with the key F5.
bool fifosAreKeyboards = false;

bool isFifo(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && S_ISFIFO(status.st_mode);
}

void setBit(void* bits, unsigned bit) {
  static_cast<std::uint8_t*>(bits)[bit / 8] |= static_cast<std::uint8_t>(1U << (bit % 8));
}

}  // namespace

/// The linker prefers it to the library's.
extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const data = va_arg(arguments, void*);
  va_end(arguments);
  if (!fifosAreKeyboards || _IOC_TYPE(request) != 'E' || !isFifo(file)) {
    return static_cast<int>(::syscall(SYS_ioctl, file, request, data));
  }
  if ((_IOC_DIR(request) & _IOC_READ) == 0) return 0;
  std::memset(data, 0, _IOC_SIZE(request));
  if (_IOC_NR(request) == _IOC_NR(EVIOCGBIT(0, 0))) setBit(data, EV_KEY);
  if (_IOC_NR(request) == _IOC_NR(EVIOCGBIT(EV_KEY, 0))) setBit(data, KEY_F5);
  return 0;
}

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kReleased = 0;
constexpr int kPressed = 1;
constexpr int kRepeated = 2;

/// Reads a pipe like a kernel device. Closing the other end unplugs it.
class PipedKeyboard final : public Keyboard {
 public:
  PipedKeyboard(FileDescriptor descriptor, int& count)
      : descriptor_(std::move(descriptor)), count_(count) {
    ++count_;
  }
  PipedKeyboard(const PipedKeyboard&) = delete;
  PipedKeyboard& operator=(const PipedKeyboard&) = delete;
  ~PipedKeyboard() override { --count_; }

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
  int& count_;
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
  /// The device fails before its file is removed.
  void breakDown() { end_ = FileDescriptor(); }

 private:
  fs::path path_;
  FileDescriptor end_;
};

class EvdevKeyWatchTest : public ::testing::Test {
 protected:
  static constexpr milliseconds kSettle{30};

  auto open(std::string_view name = "f5", const std::string& folder = "") {
    return EvdevKeyWatch::open(
        *hotkeyNamed(name),
        {.onPressed = [this] { events_.emplace_back("pressed"); },
         .onReleased = [this] { events_.emplace_back("released"); },
         .onCancelled = [this] { events_.emplace_back("cancelled"); }},
        loop_, [this](const std::string& path, int) { return openPipe(path); },
        [this] { ++firsts_; }, folder.empty() ? folder_.path().string() : folder);
  }
  OpenedKeyboard openPipe(const std::string& path) {
    if (refused_.contains(path)) return tl::unexpected(NoKeyboard::noPermission);
    FileDescriptor pipe(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!pipe.isOpen() || fstat(pipe.get(), &status) != 0 || !S_ISFIFO(status.st_mode)) {
      return tl::unexpected(NoKeyboard::notOne);
    }
    return std::make_unique<PipedKeyboard>(std::move(pipe), keyboardCount_);
  }
  Plug plug(const std::string& name) { return Plug(folder_.path() / name); }
  void settle() { loop_.runFor(kSettle); }

  test::PollLoop loop_;
  ScratchFolder folder_;
  int keyboardCount_ = 0;  ///< open keyboards
  int firsts_ = 0;
  std::set<std::string> refused_;
  std::vector<std::string> events_;
};

TEST_F(EvdevKeyWatchTest, AKeyHeldWithRepeatsIsOnePressAndOneRelease) {
  const Plug keyboard = plug("event0");
  const auto watch = open();
  ASSERT_TRUE(watch) << watch.error();
  keyboard.key(KEY_F5, kPressed);
  keyboard.key(KEY_F5, kRepeated);
  keyboard.key(KEY_F5, kRepeated);
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed"));
  keyboard.key(KEY_F5, kReleased);
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(EvdevKeyWatchTest, EscapeCancelsAndOtherKeysDoNothing) {
  const Plug keyboard = plug("event0");
  const auto watch = open("right_cmd");
  keyboard.key(KEY_RIGHTMETA, kPressed);
  keyboard.key(KEY_A, kPressed);
  keyboard.key(KEY_A, kReleased);
  keyboard.key(KEY_ESC, kPressed);
  keyboard.key(KEY_ESC, kReleased);
  keyboard.key(KEY_RIGHTMETA, kReleased);
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed", "cancelled", "released"));
}

TEST_F(EvdevKeyWatchTest, TheBackslashKeyNeedsShift) {
  const Plug keyboard = plug("event0");
  const auto watch = open("shift+\\");
  keyboard.key(KEY_BACKSLASH, kPressed);
  keyboard.key(KEY_BACKSLASH, kReleased);
  settle();
  EXPECT_THAT(events_, IsEmpty());
  keyboard.key(KEY_RIGHTSHIFT, kPressed);
  keyboard.key(KEY_BACKSLASH, kPressed);
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed"));
}

TEST_F(EvdevKeyWatchTest, AKeyboardPluggedInLaterIsRead) {
  const auto watch = open();
  ASSERT_TRUE(watch) << watch.error();
  EXPECT_EQ(keyboardCount_, 0);
  const Plug keyboard = plug("event7");
  settle();
  EXPECT_EQ(keyboardCount_, 1);
  EXPECT_EQ(firsts_, 1);
  keyboard.key(KEY_F5, kPressed);
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed"));
}

TEST_F(EvdevKeyWatchTest, UnpluggingAKeyboardReleasesItsHeldKeyOnce) {
  Plug keyboard = plug("event0");
  const auto watch = open();
  keyboard.key(KEY_F5, kPressed);
  settle();
  keyboard.unplug();
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  EXPECT_EQ(keyboardCount_, 0);
  const Plug again = plug("event0");
  settle();
  again.key(KEY_F5, kPressed);
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed", "released", "pressed"));
}

TEST_F(EvdevKeyWatchTest, ABrokenKeyboardIsDroppedBeforeItsFileIsRemoved) {
  Plug keyboard = plug("event0");
  const auto watch = open();
  keyboard.key(KEY_F5, kPressed);
  settle();
  keyboard.breakDown();
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  EXPECT_EQ(keyboardCount_, 0);
}

TEST_F(EvdevKeyWatchTest, TheKeyHeldOnTwoKeyboardsCountsOnce) {
  const Plug first = plug("event0");
  Plug second = plug("event1");
  const auto watch = open();
  first.key(KEY_F5, kPressed);
  settle();
  second.key(KEY_F5, kPressed);
  settle();
  first.key(KEY_F5, kReleased);
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed"));
  second.unplug();
  settle();
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  EXPECT_EQ(firsts_, 0);  // both were there at the start
}

TEST_F(EvdevKeyWatchTest, AKeyboardIsReadOnceItsPermissionsAllowIt) {
  refused_.insert(folder_.path() / "event3");
  const Plug keyboard = plug("event3");
  const auto watch = open();
  settle();
  EXPECT_EQ(keyboardCount_, 0);
  EXPECT_EQ(firsts_, 0);
  refused_.clear();
  fs::permissions(folder_.path() / "event3", fs::perms::owner_all);
  const Plug other = plug("event1");
  settle();
  EXPECT_EQ(keyboardCount_, 2);
  EXPECT_EQ(firsts_, 1);
}

TEST_F(EvdevKeyWatchTest, WithoutAKeyboardItSaysWhy) {
  EXPECT_THAT((*open())->whyNone(), ::testing::StartsWith("there is no keyboard"));
  const Plug keyboard = plug("event0");
  refused_.insert(folder_.path() / "event0");
  EXPECT_THAT((*open())->whyNone(), ::testing::HasSubstr("members of their group"));
  const auto nowhere = open("f5", folder_.path() / "missing");
  ASSERT_FALSE(nowhere);
  EXPECT_THAT(nowhere.error(), ::testing::StartsWith("there is no folder"));
}

TEST_F(EvdevKeyWatchTest, FilesThatAreNotKeyboardsAreIgnored) {
  std::ofstream(folder_.path() / "event0") << "text";
  const Plug mouse = plug("mouse0");
  const auto watch = open();
  ASSERT_TRUE(watch) << watch.error();
  EXPECT_EQ(keyboardCount_, 0);
}

TEST_F(EvdevKeyWatchTest, AHundredKeyboardsPluggedAndUnpluggedLeakNoDescriptor) {
  const auto watch = open();
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
  EXPECT_EQ(keyboardCount_, 0);
  EXPECT_EQ(count(), before);
}

/// A test in which the real adapter reads FIFOs.
class EvdevKeyboardTest : public EvdevKeyWatchTest {
 protected:
  EvdevKeyboardTest() { fifosAreKeyboards = true; }
  ~EvdevKeyboardTest() override { fifosAreKeyboards = false; }

  std::vector<int> pressed_;
  Keyboard::OnKey onKey_ = [this](int code, bool isDown) {
    if (isDown) pressed_.push_back(code);
  };
};

TEST_F(EvdevKeyboardTest, IsGoneAtTheEndOfItsFileAfterItsLastKeys) {
  Plug plug = this->plug("event0");
  const OpenedKeyboard keyboard = openEvdevKeyboard(folder_.path() / "event0", KEY_F5);
  ASSERT_TRUE(keyboard);
  EXPECT_TRUE((*keyboard)->read(onKey_));
  plug.key(KEY_F5, kPressed);
  EXPECT_TRUE((*keyboard)->read(onKey_));
  plug.key(KEY_F5, kReleased);
  plug.key(KEY_F5, kPressed);
  plug.breakDown();
  EXPECT_FALSE((*keyboard)->read(onKey_));
  EXPECT_THAT(pressed_, ElementsAre(KEY_F5, KEY_F5));
}

TEST_F(EvdevKeyboardTest, ThatReportsEndOfFileIsClosed) {
  ASSERT_EQ(::mkfifo((folder_.path() / "event0").c_str(), 0600), 0);
  const auto watch = EvdevKeyWatch::open(*hotkeyNamed("f5"), {}, loop_, openEvdevKeyboard, nullptr,
                                         folder_.path());
  ASSERT_TRUE(watch) << watch.error();
  EXPECT_EQ((*watch)->keyboardCount(), 1U);
  {
    const FileDescriptor writer(::open((folder_.path() / "event0").c_str(), O_WRONLY | O_CLOEXEC));
  }
  settle();
  EXPECT_EQ((*watch)->keyboardCount(), 0U);
}

TEST_F(EvdevKeyWatchTest, OnlyRealDevicesAreKeyboards) {
  const Plug pipe = plug("event0");
  std::ofstream(folder_.path() / "event1") << "text";
  for (const char* name : {"event0", "event1", "missing"}) {
    const OpenedKeyboard keyboard = openEvdevKeyboard(folder_.path() / name, KEY_F5);
    ASSERT_FALSE(keyboard) << name;
    EXPECT_EQ(keyboard.error(), NoKeyboard::notOne) << name;
  }
}

}  // namespace
}  // namespace voxtrel::quillback
