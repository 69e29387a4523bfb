// The recording overlay on the real desktop, without the rest of the application. Commands come as
// lines on standard input, each answered by one line:
//   show, hide      -> how many microseconds the call took
//   stats           -> "frames N blocks N rate HZ descriptors N threads N windows N"
//   quit            -> nothing

#include <QGuiApplication>
#include <QSocketNotifier>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

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
using Clock = std::chrono::steady_clock;

long entriesIn(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

class Driver {
 public:
  Driver() {
    stage_.onFrame = [this] { ++frames_; };
    microphone_.onBuffer = [this](const AudioBuffer& buffer) {
      ++blocks_;
      sampleRateHz_ = buffer.sampleRateHz;
    };
  }

  void obey(const std::string& command) {
    if (command == "show") timed([this] { overlay_.show(); });
    if (command == "hide") timed([this] { overlay_.hide(); });
    if (command == "stats") printStats();
    if (command == "quit") QGuiApplication::quit();
  }

 private:
  template <typename Call>
  void timed(Call call) {
    const auto start = Clock::now();
    call();
    const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    std::cout << took.count() << std::endl;
  }

  void printStats() {
    std::cout << "frames " << frames_ << " blocks " << blocks_ << " rate " << sampleRateHz_
              << " descriptors " << entriesIn("/proc/self/fd") << " threads "
              << entriesIn("/proc/self/task") << " windows "
              << QGuiApplication::topLevelWindows().size() << std::endl;
  }

  StandardErrorLog log_{LogLevel::info};
  QtMainLoop mainLoop_;
  QtOverlayStage realStage_;
  PulseMicrophone realMicrophone_;
  TimerFdFrameTimer frameTimer_;
  testing::ObservedStage stage_{realStage_};
  testing::ObservedMicrophone microphone_{realMicrophone_};
  int frames_ = 0;
  std::atomic<int> blocks_ = 0;
  std::atomic<double> sampleRateHz_ = 0;
  RecordingOverlay overlay_{{.stage = stage_,
                             .microphone = microphone_,
                             .frameTimer = frameTimer_,
                             .mainLoop = mainLoop_,
                             .log = log_,
                             .makeFft = KissRealFft::make}};
};

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  Driver driver;
  QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &input, [&] {
    std::string command;
    do {
      if (!std::getline(std::cin, command)) return QGuiApplication::quit();
      driver.obey(command);
    } while (std::cin.rdbuf()->in_avail() > 0);
  });
  return QGuiApplication::exec();
}
