#include <xcb/xcb.h>

#include <QGuiApplication>
#include <atomic>
#include <cstdlib>
#include <optional>
#include <thread>

#include "BareCapture.h"
#include "BareWindow.h"
#include "Figures.h"
#include "Latency.h"

namespace bench {
namespace {

using namespace std::chrono_literals;
using voxtrel::AudioBuffer;
using voxtrel::testing::RealOverlay;

// A round trip: the server has handled all earlier requests.
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

double toFirstFrame(RealOverlay& ours) {
  bool drawn = false;
  ours.stage.onFrame = [&] { drawn = true; };
  const auto start = Clock::now();
  ours.overlay.show();
  runLoopUntil([&] { return drawn; });  // show() has drawn already
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

}  // namespace

void benchFirstFrame(RealOverlay& ours) {
  (void)toFirstFrame(ours);  // warm up
  ours.overlay.hide();
  (void)toBareFrame();
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

void benchFirstBlock(RealOverlay& ours) {
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
    std::optional<BareCapture> capture([&](std::span<const float>) { note(); });
    while (took == 0) std::this_thread::sleep_for(1ms);
    capture.reset();
    bare.push_back(took);
    runLoopFor(20ms);
  }
  report("show to first audio block", overlay, bare, 1.3);
}

}  // namespace bench
