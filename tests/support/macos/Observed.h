#pragma once

#import <AppKit/AppKit.h>
#import <UserNotifications/UserNotifications.h>
#import <objc/runtime.h>

#include <string>
#include <vector>

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

}  // namespace voxtrel::testing
