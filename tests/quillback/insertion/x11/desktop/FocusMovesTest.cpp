#include <fstream>
#include <random>
#include <sstream>

#include "quillback/insertion/x11/desktop/TypingFixture.h"
#include "support/KeyWindows.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

/// The most characters that may go to another window after the focus has moved.
constexpr std::size_t kBound = 24;

/// A test with two windows and a typer in a process of its own.
class FocusMovesTest : public TypingFixture {
 protected:
  static std::string letters(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += static_cast<char>('a' + i % 26);
    return text;
  }
  /// Types `text` while the focus moves `delay` after the first key. What was refused, and why.
  std::pair<std::string, std::string> typeWhileFocusMoves(const std::string& text,
                                                          milliseconds delay) {
    windows_.reset();
    const std::string file = folder_.path() / "report";
    std::filesystem::remove(file);
    const test::RunningProgram typer({TYPER, text, file});
    EXPECT_TRUE(runUntil([&] { return windows_.keys(0) > 0; }));
    runFor(delay);
    windows_.focus(1);
    EXPECT_TRUE(runUntil([&] { return read(file).ends_with("\n\n"); }));
    std::istringstream report(read(file));
    std::pair<std::string, std::string> refusal;
    std::getline(report, refusal.first);
    std::getline(report, refusal.second);
    return refusal;
  }
  static std::string read(const std::string& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  test::KeyWindows windows_;
};

TEST_F(FocusMovesTest, TheOtherWindowGetsAtMostOnePieceAndNoCharacterIsLost) {
  std::mt19937 random(20240229);
  const std::string text = letters(300);
  std::uniform_int_distribution<int> delay(0, 120);
  std::size_t most = 0;
  for (int run = 0; run < 200; ++run) {
    const auto [rest, why] = typeWhileFocusMoves(text, milliseconds(delay(random)));
    const std::size_t first = windows_.keys(0);
    const std::size_t second = windows_.keys(1);
    most = std::max(most, second);
    ASSERT_LE(second, kBound) << "run " << run;
    ASSERT_EQ(rest, text.substr(first + second)) << "run " << run;
    ASSERT_EQ(why, rest.empty() ? "" : "the focus moved to another window");
  }
  RecordProperty("most", std::to_string(most));
}

TEST_F(FocusMovesTest, ABatchForSpareKeysIsNotTypedIntoTheOtherWindow) {
  std::string text;
  for (int i = 0; i < 60; ++i) text += "\xE4\xB8" + std::string(1, static_cast<char>(0x80 + i));
  const auto [rest, why] = typeWhileFocusMoves(text, milliseconds(50));
  EXPECT_EQ(windows_.keys(1), 0u);
  EXPECT_EQ(rest, text.substr(3 * windows_.keys(0)));
  EXPECT_EQ(why, "the focus moved to another window");
}

TEST_F(FocusMovesTest, ATextThatWaitedForAnotherStaysOutOfTheWindowThatGotTheFocusMeanwhile) {
  std::vector<std::string> ended;
  typer().type("Ж", [&] { ended.emplace_back("first"); });
  typer().type("second", [&] { ended.emplace_back("second"); });
  ASSERT_TRUE(runUntil([&] { return windows_.keys(0) == 1; }));
  windows_.focus(1);
  ASSERT_TRUE(runUntil([&] { return typer().isIdle(); }));
  EXPECT_EQ(windows_.keys(1), 0u);
  EXPECT_THAT(refused_, ::testing::ElementsAre("second: the focus moved to another window"));
  EXPECT_THAT(ended, ::testing::ElementsAre("first", "second"));
  type("third");
  EXPECT_EQ(windows_.keys(1), 5u);
}

}  // namespace
}  // namespace voxtrel::quillback
