#include <algorithm>
#include <array>
#include <random>
#include <span>

#include "quillback/insertion/x11/desktop/TypingFixture.h"
#include "support/KeyWindows.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

/// A test that kills typers and starts the next one.
class KilledTyperTest : public TypingFixture {
 protected:
  static constexpr std::uint8_t kFirstCode = 8;
  static constexpr std::uint8_t kCodes = 248;

  /// Foreign in each layout, and more than there are spare keys.
  static std::string foreignText() {
    std::string text = "Ab ";
    for (int i = 0; i < 60; ++i) text += "\xE4\xB8" + std::string(1, static_cast<char>(0x80 + i));
    return text;
  }
  std::unique_ptr<test::RunningProgram> startTyper() const {
    return std::make_unique<test::RunningProgram>(
        std::vector<std::string>{TYPER, foreignText(), folder_.path() / "report"});
  }
  void startAndEndOwnTyper() {
    typer();
    typer_.reset();
  }
  std::vector<int> freeCodes() const {
    const auto map = server_->reply<xcb_get_keyboard_mapping_reply_t>(
        xcb_get_keyboard_mapping(server_->get(), kFirstCode, kCodes));
    const std::span keysyms(xcb_get_keyboard_mapping_keysyms(map.get()),
                            std::size_t{kCodes} * map->keysyms_per_keycode);
    std::vector<int> codes;
    for (std::size_t i = 0; i < kCodes; ++i) {
      const auto key = keysyms.subspan(i * map->keysyms_per_keycode, map->keysyms_per_keycode);
      if (std::ranges::all_of(key, [](auto keysym) { return keysym == XCB_NO_SYMBOL; })) {
        codes.push_back(kFirstCode + static_cast<int>(i));
      }
    }
    return codes;
  }
  bool capsLockIsOn() const {
    const auto pointer = server_->reply<xcb_query_pointer_reply_t>(
        xcb_query_pointer(server_->get(), server_->root()));
    return (pointer->mask & XCB_MOD_MASK_LOCK) != 0;
  }
  /// Leaves a record as if a typer had ended without giving back what it borrowed.
  void leaveRecord(const std::vector<std::uint32_t>& values) const {
    xcb_change_property(server_->get(), XCB_PROP_MODE_REPLACE, server_->root(),
                        server_->atom("_QUILLBACK_BORROWED_KEYS"), XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
    server_->flush();
  }

  test::KeyWindows windows_;
  std::unique_ptr<XConnection> server_ = XConnection::open();
};

class KilledTyperInLayoutTest : public KilledTyperTest,
                                public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Layouts, KilledTyperInLayoutTest, ::testing::Values("us", "de", "ru,us"),
                         [](const auto& parameter) {
                           return "Layout" + std::to_string(parameter.index);
                         });

TEST_P(KilledTyperInLayoutTest, TheNextStartGivesBackSpareKeysAndCapsLock) {
  test::run(std::string("setxkbmap ") + GetParam());
  test::run("xdotool key Caps_Lock");
  const auto free = freeCodes();
  ASSERT_TRUE(capsLockIsOn());
  std::mt19937 random(20240229);
  std::uniform_int_distribution<int> delay(0, 420);
  int changed = 0;
  for (int kill = 0; kill < 67; ++kill) {
    const auto killed = startTyper();
    runFor(milliseconds(delay(random)));
    killed->end(SIGKILL);
    if (freeCodes() != free || !capsLockIsOn()) ++changed;
    startAndEndOwnTyper();
    ASSERT_EQ(freeCodes(), free) << "kill " << kill;
    ASSERT_TRUE(capsLockIsOn()) << "kill " << kill;
  }
  RecordProperty("changed", std::to_string(changed));
  EXPECT_GT(changed, 30) << "most kills came before anything was borrowed";
}

TEST_F(KilledTyperTest, AnotherTyperThatRunsKeepsItsSpareKeys) {
  const auto free = freeCodes();
  const auto other = startTyper();
  ASSERT_TRUE(runUntil([&] { return freeCodes() != free; }));
  startAndEndOwnTyper();
  EXPECT_NE(freeCodes(), free);
  other->end(SIGKILL);
  startAndEndOwnTyper();
  EXPECT_EQ(freeCodes(), free);
}

TEST_F(KilledTyperTest, ATyperThatEndsInTheMiddleLeavesNoRecord) {
  const auto isRecorded = [this] {
    const auto record = server_->reply<xcb_get_property_reply_t>(
        xcb_get_property(server_->get(), 0, server_->root(),
                         server_->atom("_QUILLBACK_BORROWED_KEYS"), XCB_ATOM_CARDINAL, 0, 1));
    return record->value_len > 0;
  };
  typer().type(foreignText());
  ASSERT_TRUE(runUntil(isRecorded));
  typer_.reset();
  EXPECT_FALSE(isRecorded());
}

TEST_F(KilledTyperTest, KeysThatHoldSomethingElseByNowAreLeftAlone) {
  test::run("xmodmap -e 'keycode 248 = F20' -e 'keycode 38 = a A'");
  const std::string before = keymap();
  // The first value is for locks; then codes, each with the keysym that it was given.
  leaveRecord({0, 248, 0x0100'0416, 38, 'a', 300, 'a', 7, 'a'});
  startAndEndOwnTyper();
  EXPECT_EQ(keymap(), before);
}

TEST_F(KilledTyperTest, ARecordThatMakesNoSenseChangesNothing) {
  const std::string before = keymap();
  for (const auto& record :
       {std::vector<std::uint32_t>{}, {0, 248}, {0, 1, 2, 3}, {~0U, ~0U, ~0U}}) {
    leaveRecord(record);
    startAndEndOwnTyper();
    EXPECT_EQ(keymap(), before);
    EXPECT_FALSE(capsLockIsOn());
  }
}

}  // namespace
}  // namespace voxtrel::quillback
