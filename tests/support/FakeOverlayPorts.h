#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/FakePorts.h"
#include "support/FakeVectorMath.h"
#include "support/ManualTime.h"
#include "support/RecordingCanvas.h"
#include "voxtrel/overlay/RecordingOverlay.h"
#include "voxtrel/platform/Microphone.h"
#include "voxtrel/platform/OverlayStage.h"

namespace voxtrel::testing {

/// What happened at the ports, oldest first.
using Diary = std::vector<std::string>;

struct FakeOverlayStage : OverlayStage {
  struct Window : OverlayWindow {
    Window(FakeOverlayStage& newStage, const Rect& newRect) : stage(newStage), rect(newRect) {
      stage.window = this;
      ++stage.windowsMade;
      stage.diary.emplace_back("window made");
    }
    ~Window() override {
      stage.window = nullptr;
      stage.lastDraw = std::move(draw);
      stage.diary.emplace_back("window out");
    }
    void setContent(double newCornerRadius, Draw newDraw) override {
      cornerRadius = newCornerRadius;
      draw = std::move(newDraw);
      stage.diary.emplace_back("content set");
    }
    void orderFrontRegardless() override { stage.diary.emplace_back("window in front"); }
    void setNeedsDisplay() override { ++displaysWanted; }

    RecordingCanvas paint() const {
      RecordingCanvas canvas;
      draw(canvas);
      return canvas;
    }

    FakeOverlayStage& stage;
    Rect rect;
    double cornerRadius = 0;
    Draw draw;
    int displaysWanted = 0;
  };

  explicit FakeOverlayStage(Diary& newDiary) : diary(newDiary) {}

  std::optional<Rect> mainScreenFrame() override { return mainScreen; }
  std::vector<Rect> screenFrames() override { return screens; }
  std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) override {
    return std::make_unique<Window>(*this, contentRect);
  }

  Diary& diary;
  std::optional<Rect> mainScreen = Rect{0, 0, 1440, 900};
  std::vector<Rect> screens;
  Window* window = nullptr;  // the open one, if any
  int windowsMade = 0;
  OverlayWindow::Draw lastDraw;  // of the last destroyed window
};

struct FakeMicrophone : Microphone {
  struct Tap : MicrophoneTap {
    explicit Tap(FakeMicrophone& newMicrophone) : microphone(newMicrophone) {
      ++microphone.tapsOpen;
    }
    ~Tap() override {
      --microphone.tapsOpen;
      microphone.diary.emplace_back("microphone closed");
    }
    FakeMicrophone& microphone;
  };

  explicit FakeMicrophone(Diary& newDiary) : diary(newDiary) {}

  std::unique_ptr<MicrophoneTap> openTap(MicrophoneTapOptions newOptions) override {
    options = std::move(newOptions);
    ++opened;
    diary.emplace_back("microphone opened");
    if (failsAtOnce) {
      options.onFailure(*failsAtOnce);
      return nullptr;
    }
    return std::make_unique<Tap>(*this);
  }

  Diary& diary;
  std::optional<std::string> failsAtOnce;
  MicrophoneTapOptions options;  // of the newest tap, closed or not
  int opened = 0, tapsOpen = 0;
};

struct FakeFrameTimer : FrameTimer {
  explicit FakeFrameTimer(Diary& newDiary) : diary(newDiary) {}

  Subscription everyFrame(std::chrono::duration<double> newInterval,
                          std::function<void()> newTask) override {
    interval = newInterval;
    task = std::move(newTask);
    ++running;
    ++started;
    diary.emplace_back("timer started");
    return Subscription([this] {
      --running;
      diary.emplace_back("timer stopped");
    });
  }

  Diary& diary;
  std::chrono::duration<double> interval{};
  std::function<void()> task;  // of the newest timer, stopped or not
  int running = 0, started = 0;
};

/// Every port of the overlay, as a fake.
struct FakeOverlayPorts {
  ManualTime time;
  FakeLog log;
  Diary diary;
  FakeOverlayStage stage{diary};
  FakeMicrophone microphone{diary};
  FakeFrameTimer frameTimer{diary};
  FakeVectorMath vectorMath;

  OverlayPorts ports() {
    return {.stage = stage,
            .microphone = microphone,
            .frameTimer = frameTimer,
            .mainLoop = time,
            .log = log,
            .vectorMath = vectorMath};
  }
};

}  // namespace voxtrel::testing
