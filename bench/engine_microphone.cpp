// Time from opening the engine's microphone to the first sample, beside a minimal libpulse program
// that connects, opens the default source and reads. Needs a sound server with a source, which
// bench/run_engine.py starts; prints "what: value" lines.

#include <pulse/context.h>
#include <pulse/mainloop.h>
#include <pulse/stream.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "quillback/audio/PulseMicrophone.h"
#include "quillback/loop/EpollLoop.h"

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kRounds = 41;
constexpr std::chrono::milliseconds kPause{150};

/// A minimal recording: one thread, one main loop, the server's default source.
class BareRecording {
 public:
  double firstSampleMs() {
    const Clock::time_point begin = Clock::now();
    pa_mainloop* loop = pa_mainloop_new();
    pa_context* context = pa_context_new(pa_mainloop_get_api(loop), "bare");
    pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    pa_stream* stream = nullptr;
    std::size_t bytes = 0;
    while (bytes == 0) {
      if (pa_mainloop_iterate(loop, 1, nullptr) < 0) return -1;
      if (pa_context_get_state(context) == PA_CONTEXT_READY && stream == nullptr) {
        stream = record(context);
      }
      const bool isOpen = stream != nullptr && pa_stream_get_state(stream) == PA_STREAM_READY;
      if (isOpen) bytes = pa_stream_readable_size(stream);
    }
    const Milliseconds time = Clock::now() - begin;
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
    pa_context_disconnect(context);
    pa_context_unref(context);
    pa_mainloop_free(loop);
    return time.count();
  }

 private:
  static pa_stream* record(pa_context* context) {
    const pa_sample_spec mono{.format = PA_SAMPLE_S16NE, .rate = 16000, .channels = 1};
    constexpr auto kUnset = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr attributes{kUnset, kUnset, kUnset, kUnset, 320};
    pa_stream* stream = pa_stream_new(context, "bare", &mono, nullptr);
    pa_stream_connect_record(stream, nullptr, &attributes, PA_STREAM_ADJUST_LATENCY);
    return stream;
  }
};

double ourFirstSampleMs() {
  voxtrel::quillback::EpollLoop loop;
  voxtrel::quillback::PulseMicrophone microphone;
  const Clock::time_point begin = Clock::now();
  std::atomic<double> time = -1;
  std::atomic<bool> hasCome = false;
  const auto capture = microphone.open({[&](std::span<const std::int16_t>) {
                                          if (hasCome.exchange(true)) return;
                                          time = Milliseconds(Clock::now() - begin).count();
                                          loop.stop();
                                        },
                                        [&](const std::string&) { loop.stop(); }});
  loop.run();
  return time;
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

}  // namespace

int main() {
  std::vector<double> ours;
  std::vector<double> bare;
  for (int round = 0; round < kRounds; ++round) {
    ours.push_back(ourFirstSampleMs());
    std::this_thread::sleep_for(kPause);
    bare.push_back(BareRecording().firstSampleMs());
    std::this_thread::sleep_for(kPause);
  }
  if (std::ranges::min(ours) < 0 || std::ranges::min(bare) < 0) return 1;
  std::printf("open to first sample, engine: %.2f ms (worst %.2f)\n", median(ours),
              std::ranges::max(ours));
  std::printf("open to first sample, bare libpulse: %.2f ms (worst %.2f)\n", median(bare),
              std::ranges::max(bare));
  std::printf("open to first sample, more than bare: %.2f ms (aim: at most 20)\n",
              median(ours) - median(bare));
  return 0;
}
