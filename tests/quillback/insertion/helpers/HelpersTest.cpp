#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "quillback/insertion/helpers/Helpers.h"
#include "quillback/insertion/helpers/NotificationText.h"
#include "support/PollLoop.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

struct Lines final : Output {
  void print(std::string_view line) override { lines.emplace_back(line); }
  std::vector<std::string> lines;
};

/// Programs of the desktop's names that write down what they got.
class HelpersTest : public ::testing::Test {
 protected:
  HelpersTest() {
    std::string name = (fs::temp_directory_path() / "quillback-helpers-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder");
    folder_ = name;
    setenv("PATH", (name + ":/usr/bin:/bin").c_str(), 1);
  }
  ~HelpersTest() override { fs::remove_all(folder_); }

  void install(const std::string& program, const std::string& script) {
    std::ofstream(folder_ / program) << "#!/bin/sh\ncd " << folder_.string() << "\n"
                                     << script << "\n";
    fs::permissions(folder_ / program, fs::perms::owner_all);
  }
  std::string written(const std::string& file) {
    const auto end = loop_.now() + std::chrono::seconds(10);
    while (!fs::exists(folder_ / "done") && loop_.now() < end) loop_.runFor(milliseconds(5));
    loop_.runFor(milliseconds(20));
    std::ifstream in(folder_ / file);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  test::PollLoop loop_;
  fs::path folder_;
  Lines output_;
  Helpers helpers_{loop_, output_};
};

TEST_F(HelpersTest, ALongTextIsCopiedWholeThoughNobodyReadsItAtOnce) {
  install("wl-copy", "sleep 0.1; cat > text; touch done");
  const std::string text(1'000'000, 'x');
  const auto start = std::chrono::steady_clock::now();
  helpers_.copy(text);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(90));
  EXPECT_EQ(written("text"), text);
  EXPECT_THAT(output_.lines, ::testing::IsEmpty());
}

TEST_F(HelpersTest, AFailedCopyIsAnErrorLineEachTime) {
  install("wl-copy", "touch done; exit 1");
  helpers_.copy("one");
  written("none");
  helpers_.copy("two");
  loop_.runFor(milliseconds(300));
  EXPECT_THAT(output_.lines, ::testing::SizeIs(2));
}

TEST_F(HelpersTest, ANotificationHasTheTextAsItIs) {
  install("notify-send", "printf '%s|' \"$@\" > words; echo \"$LC_ALL\" >> words; touch done");
  helpers_.notify("Title", "--a <b> & \\n ü");
  EXPECT_THAT(written("words"),
              ::testing::EndsWith("|--|Title|--a &lt;b&gt; &amp; \\\\n ü|C.UTF-8\n"));
}

TEST_F(HelpersTest, ThatNothingIsShownIsSaidOnce) {
  install("notify-send", "touch done; exit 1");
  helpers_.notify("Title", "one");
  written("none");
  helpers_.notify("Title", "two");
  loop_.runFor(milliseconds(300));
  EXPECT_THAT(output_.lines, ::testing::SizeIs(1));
}

TEST(NotificationTextTest, ALongTextIsCutAtTheEndOfACharacter) {
  std::string text = "x";
  for (int i = 0; i < 200; ++i) text += "ü";
  const std::string body = notificationBody(text);
  EXPECT_EQ(body.size(), 299u + std::string("…").size());
  EXPECT_TRUE(body.ends_with("ü…"));
  EXPECT_EQ(notificationBody("short"), "short");
}

}  // namespace
}  // namespace voxtrel::quillback
