#pragma once

#import <AppKit/AppKit.h>
#import <UserNotifications/UserNotifications.h>
#import <objc/runtime.h>

#include <string>
#include <vector>

#include "support/macos/Controls.h"

namespace voxtrel::testing {

/// Another body for a method, as long as this lives.
/// Thread: the main thread.
class ReplacedMethod {
 public:
  /// `body`: a block with the object and the method's arguments.
  ReplacedMethod(Class owner, SEL selector, id body)
      : method_(class_getInstanceMethod(owner, selector)),
        original_(method_setImplementation(method_, imp_implementationWithBlock(body))) {}
  ReplacedMethod(const ReplacedMethod&) = delete;
  ReplacedMethod& operator=(const ReplacedMethod&) = delete;
  ~ReplacedMethod() { method_setImplementation(method_, original_); }

  IMP original() const { return original_; }

 private:
  const Method method_;
  const IMP original_;
};

/// Keeps the addresses that the workspace is asked to open, as long as it lives. Nothing is opened.
/// Thread: the main thread.
class OpenedAddresses {
 public:
  OpenedAddresses() : replaced_(NSWorkspace.class, @selector(openURL:), body(&opened_)) {}

  const std::vector<std::string>& get() const { return opened_; }

 private:
  static id body(std::vector<std::string>* opened) {
    return ^BOOL(NSWorkspace*, NSURL* address) {
      opened->emplace_back(address.absoluteString.UTF8String);
      return NO;
    };
  }

  std::vector<std::string> opened_;
  const ReplacedMethod replaced_;
};

/// Remembers the timers with a block that are made as long as it lives.
/// Thread: the main thread.
class MadeTimers {
 public:
  MadeTimers()
      : replaced_(object_getClass(NSTimer.class), @selector(timerWithTimeInterval:repeats:block:),
                  body(this)) {}

  std::size_t count() const { return made_.size(); }
  /// How many of them a run loop would still fire.
  std::size_t countValid() const {
    std::size_t valid = 0;
    for (const WeakObject& each : made_) {
      if ([static_cast<NSTimer*>(each.object) isValid]) ++valid;
    }
    return valid;
  }

 private:
  using Make = NSTimer* (*)(id, SEL, NSTimeInterval, BOOL, void (^)(NSTimer*));

  static id body(MadeTimers* self) {
    return ^NSTimer*(Class timers, NSTimeInterval seconds, BOOL repeats, void (^fire)(NSTimer*)) {
      const auto make = reinterpret_cast<Make>(self->replaced_.original());
      NSTimer* const timer =
          make(timers, @selector(timerWithTimeInterval:repeats:block:), seconds, repeats, fire);
      self->made_.push_back({timer});
      return timer;
    };
  }

  std::vector<WeakObject> made_;
  const ReplacedMethod replaced_;
};

}  // namespace voxtrel::testing
