#include <chrono>

#include "support/macos/FormFixture.h"

namespace voxtrel::testing {
namespace {

constexpr std::size_t kRounds = 1000;
constexpr std::string_view kProgress = "812.4 MB / 3094.1 MB (26.3%)\n";
constexpr NSString* kAmount = @"812.4 MB / 3094.1 MB";

class DownloadFormTest : public FormFixture {
 protected:
  static NSTextView* log() {
    const auto texts = viewsOf<NSTextView>(native());
    return texts.empty() ? nil : texts.front();
  }
  static std::string logText() { return log().string.UTF8String; }
  static NSProgressIndicator* bar() {
    const auto bars = viewsOf<NSProgressIndicator>(native());
    return bars.empty() ? nil : bars.front();
  }
  static NSButton* skip() { return buttonTitled(native(), @"Skip (won't work without model)"); }
  static NSButton* retry() { return buttonTitled(native(), @"Retry"); }

  static std::vector<NSView*> everything() {
    std::vector<NSView*> views{log().enclosingScrollView};
    for (NSTextField* label : viewsOf<NSTextField>(native())) views.push_back(label);
    for (NSButton* button : viewsOf<NSButton>(native())) views.push_back(button);
    if (bar() != nil) views.push_back(bar());
    return views;
  }
  static bool eventuallyReads(const std::string& text) {
    return runUntil([&] { return logText() == text; });
  }
};

TEST_F(DownloadFormTest, HasTheGivenTitleAndSizeAndOnlyACloseBox) {
  openDownload();
  EXPECT_STREQ(native().title.UTF8String, "Voxtrel Setup");
  EXPECT_TRUE(NSEqualSizes(content().frame.size, NSMakeSize(420, 340)));
  EXPECT_EQ(native().styleMask, NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
  EXPECT_FALSE(native().isReleasedWhenClosed);
}

TEST_F(DownloadFormTest, ShowsBarAndLogWhileItDownloads) {
  openDownload();
  EXPECT_TRUE(labelWith(native(), @"Voxtrel — Model Setup"));
  EXPECT_TRUE(labelWith(native(), @"Downloading Whisper Large v3 (~3 GB)"));
  ASSERT_TRUE(bar());
  EXPECT_EQ(bar().doubleValue, 0);
  EXPECT_FALSE(bar().isIndeterminate);
  EXPECT_FALSE(labelWith(native(), kAmount));
  EXPECT_EQ(logText(), "Connecting to HuggingFace...");
  EXPECT_FALSE(skip().isEnabled);
  EXPECT_FALSE(retry());
}

TEST_F(DownloadFormTest, ShowsTheAmountOnceItIsKnown) {
  openDownload();
  forms.print(kProgress);
  EXPECT_TRUE(runUntil([] { return labelWith(native(), kAmount) != nil; }));
  EXPECT_NEAR(bar().doubleValue, 0.263, 1e-9);
  EXPECT_TRUE(areApart(everything()));
  keepPicture(content(), "download-progress");
}

TEST_F(DownloadFormTest, StacksItsBlocksInTheMiddleOfTheWindow) {
  openDownload();
  forms.print(kProgress);
  ASSERT_TRUE(runUntil([] { return labelWith(native(), kAmount) != nil; }));
  const NSRect title = placeOf(labelWith(native(), @"Voxtrel — Model Setup"));
  const NSRect description = placeOf(labelWith(native(), @"Downloading Whisper Large v3 (~3 GB)"));
  const NSRect amount = placeOf(labelWith(native(), kAmount));
  const NSRect logPlace = placeOf(log().enclosingScrollView.superview);
  EXPECT_EQ(NSMinX(title), 24);
  EXPECT_EQ(title.size.width, 372);
  EXPECT_EQ(NSMinY(title) - NSMaxY(description), 16);
  EXPECT_EQ(NSMinY(description) - NSMaxY(placeOf(bar())), 16);
  EXPECT_EQ(NSMinX(placeOf(bar())), 32);
  EXPECT_EQ(NSMinY(placeOf(bar())) - NSMaxY(amount), 8);
  EXPECT_EQ(NSMinY(amount) - NSMaxY(logPlace), 16);
  EXPECT_EQ(logPlace.size.height, 80);
  EXPECT_NEAR(340 - NSMaxY(title), NSMinY(placeOf(skip())), 4);
}

TEST_F(DownloadFormTest, ShowsAFullBarAndDoneAtTheEnd) {
  openDownload();
  forms.exit(0);
  EXPECT_EQ(bar().doubleValue, 1);
  EXPECT_TRUE(eventuallyReads("Connecting to HuggingFace...\nDone!"));
  EXPECT_TRUE(skip().isEnabled);
  EXPECT_FALSE(retry());
}

TEST_F(DownloadFormTest, ShowsTheErrorInsteadOfTheBar) {
  openDownload();
  forms.print(kProgress);
  forms.exit(3);
  EXPECT_FALSE(bar());
  NSTextField* const message =
      labelWith(native(), @"Setup failed (exit code 3). Check internet connection.");
  NSTextField* const hint = labelWith(native(), @"Check your internet connection and try again.");
  ASSERT_TRUE(message);
  ASSERT_TRUE(hint);
  EXPECT_TRUE([message.textColor isEqual:NSColor.systemRedColor]);
  EXPECT_TRUE([hint.textColor isEqual:NSColor.systemOrangeColor]);
  EXPECT_TRUE(skip().isEnabled);
  ASSERT_TRUE(retry());
  EXPECT_EQ(retry().controlSize, NSControlSizeLarge);
  EXPECT_TRUE(areApart(everything()));
  keepPicture(content(), "download-error");
}

TEST_F(DownloadFormTest, WrapsALongError) {
  forms.bundle.engine = "/nowhere/" + std::string(120, 'x') + "/quillback";
  openDownload();
  EXPECT_TRUE(areApart(everything()));
  keepPicture(content(), "download-long-error");
}

TEST_F(DownloadFormTest, RestartsOnRetryWithANewLog) {
  openDownload();
  forms.print("a\nb\n");
  forms.exit(1);
  EXPECT_TRUE(eventuallyReads("Connecting to HuggingFace...\na\nb"));
  [retry() performClick:nil];
  forms.print("c\nd\ne\n");  // as many lines as before, and no frame in between
  EXPECT_TRUE(eventuallyReads("Connecting to HuggingFace...\nc\nd\ne"));
  EXPECT_TRUE(bar());
}

TEST_F(DownloadFormTest, SkipsOnTheSkipButtonWhichMayDestroyTheWindow) {
  WeakObject gone;
  forms.bundle.engine = "/nowhere/quillback";
  forms.onSkip = [this] { window.reset(); };
  @autoreleasepool {
    openDownload();
    gone.object = native();
    [skip() performClick:nil];
    EXPECT_EQ(forms.skips, 1);
    EXPECT_FALSE(native());
  }
  EXPECT_TRUE(runUntil([&] { return gone.object == nil; }));
}

TEST_F(DownloadFormTest, PressesTheFocusedButtonOnReturn) {
  forms.bundle.engine = "/nowhere/quillback";
  openDownload();
  [native() makeFirstResponder:skip()];
  press(native(), @"\r");
  press(native(), @"\r", 0, true);
  EXPECT_EQ(forms.skips, 1);
}

TEST_F(DownloadFormTest, ClosesOnEscapeWithoutSkipping) {
  openDownload();
  press(native(), @"\x1b");
  EXPECT_FALSE(window->isVisible());
  forms.print("a\n");
  forms.exit(0);
  EXPECT_EQ(forms.skips, 0);
  forms.time.advance(std::chrono::seconds(1));
  EXPECT_EQ(forms.completions, 1);
}

TEST_F(DownloadFormTest, ShowsWhatHappenedWhileItWasClosed) {
  openDownload();
  window->close();
  forms.print("a\n");
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(eventuallyReads("Connecting to HuggingFace...\na"));
}

TEST_F(DownloadFormTest, KeepsTheNewestLineInView) {
  openDownload();
  std::string lines;
  for (int number = 0; number < 300; ++number) lines += "line " + std::to_string(number) + "\n";
  forms.print(lines);
  const auto newestIsInView = [] {
    return log().visibleRect.size.height > 0 &&
           NSMaxY(log().visibleRect) >= NSMaxY(log().bounds) - 8;
  };
  EXPECT_TRUE(runUntil([&] { return logText().ends_with("line 299") && newestIsInView(); }));
  [log() scrollRangeToVisible:NSMakeRange(0, 0)];
  EXPECT_FALSE(newestIsInView());
  forms.print("one more\n");
  EXPECT_TRUE(runUntil([&] { return logText().ends_with("one more") && newestIsInView(); }));
  keepPicture(content(), "download-log");
}

TEST_F(DownloadFormTest, BearsAFloodOfLines) {
  openDownload();
  for (int burst = 0; burst < 50; ++burst) {
    std::string lines;
    for (int number = 0; number < 400; ++number) lines += "a line of the setup's output\n";
    forms.print(lines);
  }
  forms.print("the last\n");
  EXPECT_TRUE(runUntil([] { return logText().ends_with("the last"); }));
  EXPECT_EQ(forms.skips, 0);
}

TEST_F(DownloadFormTest, TheLogCanBeReadButNotEdited) {
  openDownload();
  EXPECT_FALSE(log().isEditable);
  EXPECT_TRUE(log().isSelectable);
  EXPECT_STREQ(log().accessibilityLabel.UTF8String, "Download log");
  EXPECT_STREQ(bar().accessibilityLabel.UTF8String, "Download progress");
}

TEST_F(DownloadFormTest, IsNotCalledByAFormThatOutlivesIt) {
  const auto form = forms.download();
  WeakObject gone;
  @autoreleasepool {
    open(windows.makeWindow({"Voxtrel Setup", 420, 340}, form));
    forms.time.runPosted();
    gone.object = content();
    forms.print("a line that waits for its frame\n");
    window.reset();
  }
  ASSERT_TRUE(runUntil([&] { return gone.object == nil; }));
  forms.print(kProgress);
  forms.exit(0);
  EXPECT_EQ(form->downloadProgress(), 1);
}

TEST_F(DownloadFormTest, LeavesNothingBehindInAThousandRounds) {
  expectNothingLeft(kRounds, [this] {
    return windows.makeWindow({"Voxtrel Setup", 420, 340}, forms.download());
  });
}

}  // namespace
}  // namespace voxtrel::testing
