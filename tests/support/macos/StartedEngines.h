#pragma once

#import <AVFoundation/AVFoundation.h>
#import <objc/runtime.h>

#include <vector>

#include "support/macos/Controls.h"

namespace voxtrel::testing {

/// Remembers every AVAudioEngine that is started while this lives, in order.
/// Thread: the main thread.
class StartedEngines {
 public:
  StartedEngines()
      : method_(class_getInstanceMethod(AVAudioEngine.class, @selector(startAndReturnError:))) {
    started_.clear();
    original_ =
        reinterpret_cast<Start>(method_setImplementation(method_, reinterpret_cast<IMP>(observe)));
  }
  ~StartedEngines() { method_setImplementation(method_, reinterpret_cast<IMP>(original_)); }
  StartedEngines(const StartedEngines&) = delete;
  StartedEngines& operator=(const StartedEngines&) = delete;

  static const std::vector<WeakObject>& all() { return started_; }
  static AVAudioEngine* newest() { return started_.empty() ? nil : started_.back().object; }

 private:
  using Start = BOOL (*)(id, SEL, NSError**);

  static BOOL observe(id engine, SEL command, NSError** error) {
    started_.push_back({engine});
    return original_(engine, command, error);
  }

  static inline std::vector<WeakObject> started_;
  static inline Start original_ = nullptr;
  Method method_;
};

}  // namespace voxtrel::testing
