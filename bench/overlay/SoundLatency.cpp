#include <atomic>
#include <cmath>
#include <thread>

#include "BareCapture.h"
#include "Figures.h"
#include "Latency.h"
#include "TonePlayer.h"
#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"
#include "voxtrel/platform/linux/sound/PulseMicrophone.h"

namespace bench {
namespace {

using namespace std::chrono_literals;
using namespace voxtrel;

/// The time of the first call of `now` since `at` was 0.
struct FirstTime {
  std::atomic<Clock::rep> at = 0;
  void now() {
    Clock::rep none = 0;
    at.compare_exchange_strong(none, Clock::now().time_since_epoch().count());
  }
};

double millisecondsBetween(Clock::rep start, Clock::rep end) {
  return std::chrono::duration<double, std::milli>(Clock::duration(end - start)).count();
}

}  // namespace

void benchSoundToEnergy(const char* sink) {
  FirstTime written, byUs, byBare;
  const PlainVectorMath math{};
  FFTBarView view({0, 0, 90, 21}, math);
  PulseMicrophone microphone;
  MicrophoneTapOptions options;
  options.onBuffer = [&](const AudioBuffer& buffer) {
    view.processAudio(buffer);
    const BandLevels levels = view.bandEnergy();
    if (*std::max_element(levels.begin(), levels.end()) == 1.0F) byUs.now();
  };
  options.onFailure = [](const std::string& why) { std::fprintf(stderr, "%s\n", why.c_str()); };
  const auto tap = microphone.openTap(std::move(options));
  const BareCapture bare([&](std::span<const float> samples) {
    if (std::any_of(samples.begin(), samples.end(), [](float x) { return std::abs(x) > 0.01F; })) {
      byBare.now();
    }
  });
  TonePlayer player(sink);
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

}  // namespace bench
