#include "support/overlay_driver/Driver.h"

#include <QGuiApplication>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <iterator>

namespace voxtrel::testing {
namespace {

auto entriesIn(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

}  // namespace

Driver::Driver() {
  real_.stage.onFrame = [this] { ++frames_; };
  real_.microphone.onBuffer = [this](const AudioBuffer& buffer) {
    ++blocks_;
    sampleRateHz_ = buffer.sampleRateHz;
  };
}

void Driver::obey(const std::string& command) {
  if (command == "show") printDurationOf([this] { real_.overlay.show(); });
  if (command == "hide") printDurationOf([this] { real_.overlay.hide(); });
  if (command == "stats") printStats();
  if (command == "quit") QGuiApplication::quit();
}

void Driver::printDurationOf(const std::function<void()>& call) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  call();
  const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
  std::cout << took.count() << std::endl;
}

void Driver::printStats() const {
  std::cout << "frames " << frames_ << " blocks " << blocks_ << " rate " << sampleRateHz_
            << " descriptors " << entriesIn("/proc/self/fd") << " threads "
            << entriesIn("/proc/self/task") << " windows "
            << QGuiApplication::topLevelWindows().size() << std::endl;
}

}  // namespace voxtrel::testing
