// How fast the overlay comes up and hears, beside the least that its parts take. Needs a display and
// a sound server whose default source hears what is played to the sink given as the argument.
#include <xcb/xcb.h>

#include <QGuiApplication>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>
#include <thread>
#include <vector>

#include "BareCapture.h"
#include "BareWindow.h"
#include "TonePlayer.h"
#include "overlay/RecordingOverlay.h"
#include "platform/kissfft/KissRealFft.h"
#include "platform/linux/PulseMicrophone.h"
#include "platform/linux/QtMainLoop.h"
#include "platform/linux/QtOverlayStage.h"
#include "platform/linux/StandardErrorLog.h"
#include "platform/linux/TimerFdFrameTimer.h"
#include "support/overlay_driver/ObservedPorts.h"

namespace {

using namespace voxtrel;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 60;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.at(values.size() / 2);
}

void report(const char* what, const std::vector<double>& ours, const std::vector<double>& bare,
            double aim) {
  std::printf("%s, ms: %.2f\n", what, median(ours));
  std::printf("%s, bare, ms: %.2f\n", what, median(bare));
  std::printf("%s, ratio (aim %.1f): %.2f\n", what, aim, median(ours) / median(bare));
}

// A round trip: what was asked for before has been done.
void waitForServer() {
  auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  xcb_connection_t* server = x11->connection();
  std::free(xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
}

void runLoopFor(std::chrono::milliseconds duration) {
  const auto end = Clock::now() + duration;
  while (Clock::now() < end) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

template <typename Done>
void runLoopUntil(Done done) {
  while (!done()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

struct Overlay {
  StandardErrorLog log{LogLevel::info};
  QtMainLoop mainLoop;
  QtOverlayStage realStage;
  PulseMicrophone realMicrophone;
  TimerFdFrameTimer frameTimer;
  testing::ObservedStage stage{realStage};
  testing::ObservedMicrophone microphone{realMicrophone};
  RecordingOverlay overlay{{.stage = stage,
                            .microphone = microphone,
                            .frameTimer = frameTimer,
                            .mainLoop = mainLoop,
                            .log = log,
                            .makeFft = KissRealFft::make}};
};

double toFirstFrame(Overlay& ours) {
  bool drawn = false;
  ours.stage.onFrame = [&] { drawn = true; };
  const auto start = Clock::now();
  ours.overlay.show();
  runLoopUntil([&] { return drawn; });  // it is, already
  waitForServer();
  const double took = millisecondsSince(start);
  ours.stage.onFrame = [] {};
  return took;
}

double toBareFrame() {
  bool drawn = false;
  const auto start = Clock::now();
  bench::BareWindow window([&] { drawn = true; });
  window.show();
  runLoopUntil([&] { return drawn; });
  waitForServer();
  return millisecondsSince(start);
}

void benchFirstFrame(Overlay& ours) {
  std::vector<double> overlay, bare;
  for (int round = 0; round < kRounds; ++round) {
    overlay.push_back(toFirstFrame(ours));
    ours.overlay.hide();
    runLoopFor(30ms);
    bare.push_back(toBareFrame());
    runLoopFor(30ms);
  }
  report("show to first frame", overlay, bare, 1.3);
}

void benchFirstBlock(Overlay& ours) {
  std::vector<double> overlay, bare;
  for (int round = 0; round < kRounds; ++round) {
    std::atomic<double> took = 0;
    auto start = Clock::now();
    const auto note = [&] {
      double none = 0;
      took.compare_exchange_strong(none, millisecondsSince(start));
    };
    ours.microphone.onBuffer = [&](const AudioBuffer&) { note(); };
    ours.overlay.show();
    while (took == 0) std::this_thread::sleep_for(1ms);
    ours.overlay.hide();
    ours.microphone.onBuffer = [](const AudioBuffer&) {};
    overlay.push_back(took);
    runLoopFor(20ms);

    took = 0;
    start = Clock::now();
    std::optional<bench::BareCapture> capture([&](std::span<const float>) { note(); });
    while (took == 0) std::this_thread::sleep_for(1ms);
    capture.reset();
    bare.push_back(took);
    runLoopFor(20ms);
  }
  report("show to first audio block", overlay, bare, 1.3);
}

struct Heard {
  std::atomic<Clock::rep> at = 0;
  void now() {
    Clock::rep none = 0;
    at.compare_exchange_strong(none, Clock::now().time_since_epoch().count());
  }
};

double millisecondsBetween(Clock::rep start, Clock::rep end) {
  return std::chrono::duration<double, std::milli>(Clock::duration(end - start)).count();
}

void benchSoundToEnergy(const char* sink) {
  Heard written, byUs, byBare;
  FFTBarView view({0, 0, 90, 21}, KissRealFft::make());
  PulseMicrophone microphone;
  MicrophoneTapOptions options;
  options.onBuffer = [&](const AudioBuffer& buffer) {
    view.processAudio(buffer);
    const BandLevels levels = view.bandEnergy();
    if (*std::max_element(levels.begin(), levels.end()) == 1.0F) byUs.now();
  };
  options.onFailure = [](const std::string& why) { std::fprintf(stderr, "%s\n", why.c_str()); };
  const auto tap = microphone.openTap(std::move(options));
  const bench::BareCapture bare([&](std::span<const float> samples) {
    if (std::any_of(samples.begin(), samples.end(), [](float x) { return std::abs(x) > 0.01F; })) {
      byBare.now();
    }
  });
  bench::TonePlayer player(sink);
  std::this_thread::sleep_for(500ms);

  std::vector<double> ours, yardstick;
  for (int round = 0; round < kRounds; ++round) {
    written.at = byUs.at = byBare.at = 0;
    player.beep([&](Clock::time_point) { written.now(); });
    while (byUs.at == 0 || byBare.at == 0) std::this_thread::sleep_for(1ms);
    ours.push_back(millisecondsBetween(written.at, byUs.at));
    yardstick.push_back(millisecondsBetween(written.at, byBare.at));
    std::this_thread::sleep_for(200ms + std::chrono::milliseconds(round * 7 % 23));
  }
  report("sound to band energy", ours, yardstick, 1.2);
}

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  Overlay ours;
  (void)toFirstFrame(ours);  // what is made once and kept
  ours.overlay.hide();
  (void)toBareFrame();
  benchFirstFrame(ours);
  benchFirstBlock(ours);
  benchSoundToEnergy(argc > 1 ? argv[1] : nullptr);
}
