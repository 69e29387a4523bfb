#include <gtest/gtest.h>
#import <objc/runtime.h>

#include <optional>

#include "support/macos/Controls.h"
#include "support/macos/RunLoop.h"
#include "voxtrel/platform/macos/windows/AppKitAlerts.h"

namespace voxtrel::testing {
namespace {

const Alert kAlert{.messageText = "Microphone Permission Required",
                   .informativeText = "Voxtrel needs microphone access.",
                   .buttons = {"Open Settings", "Quit"}};

/// Shows the alert, lets `user` act in its window and returns the answer; none if none came.
std::optional<std::size_t> answerOf(const Alert& alert, void (^user)(NSWindow* window)) {
  NSTimer* const timer = [NSTimer timerWithTimeInterval:0.1
                                                repeats:NO
                                                  block:^(NSTimer*) {
                                                    user(NSApp.modalWindow);
                                                    wakeModalLoop();
                                                  }];
  [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
  std::optional<std::size_t> answer;
  AppKitAlerts().runModal(alert, [&](std::size_t button) { answer = button; });
  return answer;
}

TEST(AppKitAlertsTest, AnswersWithTheIndexOfTheButton) {
  EXPECT_EQ(answerOf(kAlert,
                     ^(NSWindow* window) {
                       [buttonTitled(window, @"Open Settings") performClick:nil];
                     }),
            0U);
  EXPECT_EQ(answerOf(kAlert,
                     ^(NSWindow* window) {
                       [buttonTitled(window, @"Quit") performClick:nil];
                     }),
            1U);
}

TEST(AppKitAlertsTest, ShowsBothTexts) {
  __block bool showsBoth = false;
  EXPECT_TRUE(answerOf(kAlert, ^(NSWindow* window) {
    showsBoth = labelWith(window, @"Microphone Permission Required") != nil;
    NSView* const content = window.contentView;
    keepPicture(content, "alert");
    [buttonTitled(window, @"Quit") performClick:nil];
  }));
  EXPECT_TRUE(showsBoth);
}

TEST(AppKitAlertsTest, PressesTheFirstButtonOnReturnAndTheLastOnEscape) {
  EXPECT_EQ(answerOf(kAlert,
                     ^(NSWindow* window) {
                       [window performKeyEquivalent:keyDown(window, @"\r")];
                     }),
            0U);
  EXPECT_EQ(answerOf(kAlert,
                     ^(NSWindow* window) {
                       [window performKeyEquivalent:keyDown(window, @"\x1b")];
                     }),
            1U);
}

TEST(AppKitAlertsTest, GivesASingleButtonReturn) {
  EXPECT_EQ(answerOf({.messageText = "Text", .informativeText = {}, .buttons = {"OK"}},
                     ^(NSWindow* window) {
                       [window performKeyEquivalent:keyDown(window, @"\r")];
                     }),
            0U);
}

TEST(AppKitAlertsTest, GivesNoAnswerIfTheApplicationEndsIt) {
  EXPECT_FALSE(answerOf(kAlert, ^(NSWindow*) {
    [NSApp stopModalWithCode:NSModalResponseAbort];
  }));
}

/// Answers every alert at once, as long as it lives, and looks at what was made.
/// Thread: the main thread.
class InstantAnswers {
 public:
  InstantAnswers() : method_(class_getInstanceMethod(NSAlert.class, @selector(runModal))) {
    seen_.clear();
    original_ = method_setImplementation(
        method_, imp_implementationWithBlock(^NSModalResponse(NSAlert* alert) {
          seen_.push_back({alert});
          style_ = alert.alertStyle;
          return NSAlertFirstButtonReturn + 1;
        }));
  }
  ~InstantAnswers() { method_setImplementation(method_, original_); }
  InstantAnswers(const InstantAnswers&) = delete;
  InstantAnswers& operator=(const InstantAnswers&) = delete;

  static std::vector<WeakObject> seen_;
  static NSAlertStyle style_;

 private:
  Method method_;
  IMP original_;
};

std::vector<WeakObject> InstantAnswers::seen_;
NSAlertStyle InstantAnswers::style_;

TEST(AppKitAlertsTest, IsAWarning) {
  const InstantAnswers answers;
  AppKitAlerts().runModal(kAlert, [](std::size_t) {});
  EXPECT_EQ(InstantAnswers::style_, NSAlertStyleWarning);
}

TEST(AppKitAlertsTest, LeavesNothingBehindInAThousandRounds) {
  constexpr std::size_t kRounds = 1000;
  const InstantAnswers instant;
  std::size_t answers = 0;
  for (std::size_t round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      AppKitAlerts().runModal(kAlert, [&](std::size_t button) { answers += button; });
    }
  }
  EXPECT_EQ(answers, kRounds);
  EXPECT_EQ(InstantAnswers::seen_.size(), kRounds);
  EXPECT_EQ(countAlive(InstantAnswers::seen_), 0U);
}

}  // namespace
}  // namespace voxtrel::testing
