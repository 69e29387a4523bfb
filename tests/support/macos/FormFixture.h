#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/FormStates.h"
#include "support/macos/Controls.h"
#include "support/macos/RunLoop.h"
#include "voxtrel/platform/macos/windows/AppKitFormWindows.h"

namespace voxtrel::testing {

/// The forms in AppKit's windows.
class FormFixture : public ::testing::Test {
 protected:
  ~FormFixture() override {
    @autoreleasepool {
      window.reset();
      runOnce();
    }
  }

  static NSWindow* native() { return visibleWindow(@"VoxtrelFormWindow"); }
  static NSView* content() { return native().contentView; }

  void open(std::unique_ptr<FormWindow> newWindow) {
    window = std::move(newWindow);
    window->makeKeyAndOrderFront();
    runOnce();
  }
  void openSettings() {
    open(windows.makeWindow({"Voxtrel Settings", 420, 280}, forms.settings()));
  }
  void openDownload() {
    open(windows.makeWindow({"Voxtrel Setup", 420, 340}, forms.download()));
    forms.time.runPosted();
  }

  /// Opens and closes the window that `make` gives so many times; few rounds show it, because drawing takes the
  /// rig longer than anything else. Expects that nothing native is left.
  template <class Make>
  void expectNothingLeft(std::size_t rounds, const Make& make) {
    constexpr std::size_t kRoundsForEachShown = 50;
    std::vector<WeakObject> natives;
    for (std::size_t round = 0; round < rounds; ++round) {
      @autoreleasepool {
        window = make();
        natives.push_back({newestWindow(@"VoxtrelFormWindow")});
        natives.push_back({newestWindow(@"VoxtrelFormWindow").contentView});
        if (round % kRoundsForEachShown == 0) {
          restartTestLimit();
          window->makeKeyAndOrderFront();
        }
        window.reset();
        drain();
      }
    }
    EXPECT_TRUE(runUntil([&] { return countAlive(natives) == 0; })) << countAlive(natives);
    EXPECT_EQ(natives.size(), 2 * rounds);
  }

  FormStates forms;
  AppKitFormWindows windows;
  std::unique_ptr<FormWindow> window;
};

/// Whether all `views` lie inside their window and no two overlap.
inline ::testing::AssertionResult areApart(const std::vector<NSView*>& views) {
  for (std::size_t one = 0; one < views.size(); ++one) {
    const NSRect place = placeOf(views[one]);
    const std::string name = NSStringFromRect(place).UTF8String;
    NSView* const content = views[one].window.contentView;
    if (!NSContainsRect(content.frame, place)) {
      return ::testing::AssertionFailure() << name << " leaves the window";
    }
    for (std::size_t other = one + 1; other < views.size(); ++other) {
      if (NSIntersectsRect(place, placeOf(views[other]))) {
        return ::testing::AssertionFailure()
               << name << " covers " << NSStringFromRect(placeOf(views[other])).UTF8String;
      }
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace voxtrel::testing
