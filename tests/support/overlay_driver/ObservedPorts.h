#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "voxtrel/platform/Microphone.h"
#include "voxtrel/platform/OverlayStage.h"

namespace voxtrel::testing {

using SteadyTime = std::chrono::steady_clock::time_point;

/// A real stage that reports each painted frame.
class ObservedStage : public OverlayStage {
 public:
  explicit ObservedStage(OverlayStage& real) : real_(real) {}

  std::optional<Rect> mainScreenFrame() override { return real_.mainScreenFrame(); }
  std::vector<Rect> screenFrames() override { return real_.screenFrames(); }
  std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) override {
    return std::make_unique<Window>(*this, real_.makeWindow(contentRect));
  }

  std::function<void()> onFrame = [] {};

 private:
  struct Window : OverlayWindow {
    Window(ObservedStage& newStage, std::unique_ptr<OverlayWindow> newReal)
        : stage(newStage), real(std::move(newReal)) {}
    void setContent(double cornerRadius, Draw draw) override {
      real->setContent(cornerRadius, [this, draw = std::move(draw)](Canvas& canvas) {
        draw(canvas);
        stage.onFrame();
      });
    }
    void orderFrontRegardless() override { real->orderFrontRegardless(); }
    void setNeedsDisplay() override { real->setNeedsDisplay(); }

    ObservedStage& stage;
    std::unique_ptr<OverlayWindow> real;
  };

  OverlayStage& real_;
};

/// A real microphone that reports each delivered buffer.
class ObservedMicrophone : public Microphone {
 public:
  explicit ObservedMicrophone(Microphone& real) : real_(real) {}

  std::unique_ptr<MicrophoneTap> openTap(MicrophoneTapOptions options) override {
    options.onBuffer = [this, forward = std::move(options.onBuffer)](const AudioBuffer& buffer) {
      forward(buffer);
      onBuffer(buffer);
    };
    return real_.openTap(std::move(options));
  }

  std::function<void(const AudioBuffer&)> onBuffer = [](const AudioBuffer&) {};  // any thread

 private:
  Microphone& real_;
};

}  // namespace voxtrel::testing
