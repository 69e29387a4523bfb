#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "quillback/dictation/Dictation.h"
#include "support/FakeEnginePorts.h"
#include "support/ManualLoop.h"

namespace voxtrel::quillback {

/// A dictation on fake ports.
/// Thread: one.
class DictationFixture : public testing::Test {
 protected:
  static constexpr std::int16_t kLoud = 3000;

  void findKeyAndMicrophone() {
    dictation_->keySeen();
    dictation_->microphoneFound();
  }
  void load() {
    findKeyAndMicrophone();
    dictation_->modelLoaded(recogniser_);
    output_.take();
  }
  /// Presses the key and speaks for `span`.
  void hold(std::chrono::milliseconds span, std::int16_t level = kLoud) {
    dictation_->keyPressed();
    speak(span, level);
  }
  /// The sound arrives as it is spoken.
  void speak(std::chrono::milliseconds span, std::int16_t level = kLoud) {
    for (std::chrono::milliseconds spoken{0}; spoken < span;
         spoken += std::chrono::milliseconds(10)) {
      microphone_.feed(kSampleRateHz / 100, level);
      loop_.advance(std::chrono::milliseconds(10));
    }
    loop_.runPosted();
  }
  /// Releases the key and waits for the end of the tail.
  void release() {
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
  test::FakeTakeStore store_;
  test::FakeScreenLock lock_;
  std::unique_ptr<Dictation> dictation_ =
      std::make_unique<Dictation>(loop_, microphone_, sink_, store_, lock_, output_);
};

}  // namespace voxtrel::quillback
