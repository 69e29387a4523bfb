#include <gmock/gmock.h>

#include "quillback/notifications/Notifier.h"
#include "support/FakeEnginePorts.h"
#include "support/NotificationService.h"
#include "support/PollLoop.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A real bus with a service that the test controls.
class NotifierTest : public ::testing::Test {
 protected:
  bool waitForShown(std::size_t count) {
    const auto end = loop_.now() + std::chrono::seconds(10);
    while (service_.shown.size() < count && loop_.now() < end) {
      loop_.runFor(std::chrono::milliseconds(5));
    }
    loop_.runFor(std::chrono::milliseconds(20));
    return service_.shown.size() == count;
  }

  test::SessionBus bus_;
  test::PollLoop loop_;
  test::NotificationService service_{loop_};
  test::FakeOutput output_;
  Notifier notifier_{loop_, output_};
};

TEST_F(NotifierTest, ShowsTheTextUnchangedAndWithoutMarkup) {
  notifier_.notify("Title ü", "--a <b> & \\n ü");
  ASSERT_TRUE(waitForShown(1));
  EXPECT_EQ(service_.shown[0].title, "Title ü");
  EXPECT_EQ(service_.shown[0].body, "--a &lt;b&gt; &amp; \\n ü");
  EXPECT_THAT(output_.lines, IsEmpty());
}

TEST_F(NotifierTest, ReplacesTheOneBefore) {
  notifier_.notify("Title", "one");
  ASSERT_TRUE(waitForShown(1));
  notifier_.notify("Title", "two");
  ASSERT_TRUE(waitForShown(2));
  EXPECT_EQ(service_.shown[0].replaced, 0U);
  EXPECT_EQ(service_.shown[1].replaced, 1U);
  EXPECT_THAT(service_.closed, IsEmpty());
}

// Some desktops change a notification that has left the screen only in a list.
TEST_F(NotifierTest, ClosesAnOldOneAndShowsANewOne) {
  Notifier notifier(loop_, output_, std::chrono::milliseconds(0));
  notifier.notify("Title", "one");
  ASSERT_TRUE(waitForShown(1));
  EXPECT_THAT(service_.closed, IsEmpty());
  notifier.notify("Title", "two");
  ASSERT_TRUE(waitForShown(2));
  EXPECT_THAT(service_.closed, ElementsAre(1U));
  EXPECT_EQ(service_.shown[1].replaced, 0U);
}

TEST_F(NotifierTest, SendsOnlyTheNewestOfThoseThatCameMeanwhile) {
  for (const char* body : {"one", "two", "three"}) notifier_.notify("Title", body);
  ASSERT_TRUE(waitForShown(2));
  EXPECT_EQ(service_.shown[1].body, "three");
  EXPECT_EQ(service_.shown[1].replaced, 1U);
}

TEST_F(NotifierTest, CutsALongTextAfterAWholeCharacter) {
  std::string text = "x";
  for (int i = 0; i < 200; ++i) text += "ü";
  notifier_.notify("Title", text);
  ASSERT_TRUE(waitForShown(1));
  EXPECT_EQ(service_.shown[0].body.size(), 299U + std::string("…").size());
  EXPECT_TRUE(service_.shown[0].body.ends_with("ü…"));
}

TEST_F(NotifierTest, PrintsOnlyTheFirstFailure) {
  service_.refuses = true;
  notifier_.notify("Title", "one");
  ASSERT_TRUE(waitForShown(1));
  notifier_.notify("Title", "two");
  ASSERT_TRUE(waitForShown(2));
  EXPECT_THAT(output_.lines, SizeIs(1));
}

TEST(NotifierWithoutABus, PrintsOneLine) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::PollLoop loop;
  test::FakeOutput output;
  Notifier notifier(loop, output);
  notifier.notify("Title", "one");
  loop.runFor(std::chrono::milliseconds(100));
  notifier.notify("Title", "two");
  loop.runFor(std::chrono::milliseconds(100));
  EXPECT_THAT(output.lines, SizeIs(1));
}

}  // namespace
}  // namespace voxtrel::quillback
