#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "quillback/dictation/Dictation.h"
#include "support/FakeEnginePorts.h"
#include "support/ManualLoop.h"

namespace voxtrel::quillback {

/// A dictation with all its ports in the test's hands.
/// Thread: one.
class DictationTest : public testing::Test {
 protected:
  static constexpr std::int16_t kLoud = 3000;

  void load() {
    dictation_->modelLoaded(recogniser_);
    output_.take();
  }
  /// Holds the key for `span` of speech, which arrives as it is spoken.
  void hold(std::chrono::milliseconds span, std::int16_t level = kLoud) {
    dictation_->keyPressed();
    speak(span, level);
  }
  void speak(std::chrono::milliseconds span, std::int16_t level = kLoud) {
    for (std::chrono::milliseconds spoken{0}; spoken < span;
         spoken += std::chrono::milliseconds(10)) {
      microphone_.hear(kSampleRateHz / 100, level);
      loop_.advance(std::chrono::milliseconds(10));
    }
    loop_.runPosted();
  }
  /// Lets go of the key, and of the tail.
  void letGo() {
    dictation_->keyReleased();
    loop_.advance(Dictation::kTail);
  }
  void understand(const std::string& text) {
    recogniser_.understand(text);
    loop_.runPosted();
  }

  test::ManualLoop loop_;
  test::FakeMicrophone microphone_;
  test::FakeRecogniser recogniser_;
  test::FakeOutput output_;
  test::FakeTextSink sink_{output_};
  std::unique_ptr<Dictation> dictation_ =
      std::make_unique<Dictation>(loop_, microphone_, sink_, output_);
};

}  // namespace voxtrel::quillback
