#pragma once

#include <pulse/pulseaudio.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

namespace bench {

/// Plays silence, and a short tone on request.
class TonePlayer {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  explicit TonePlayer(const char* sink) : sink_(sink) {
    loop_ = pa_threaded_mainloop_new();
    context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "tone");
    pa_context_set_state_callback(context_, &contextChanged, this);
    pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    pa_threaded_mainloop_start(loop_);
  }
  TonePlayer(const TonePlayer&) = delete;
  TonePlayer& operator=(const TonePlayer&) = delete;
  ~TonePlayer() {
    pa_threaded_mainloop_stop(loop_);
    if (stream_ != nullptr) pa_stream_unref(stream_);
    pa_context_disconnect(context_);
    pa_context_unref(context_);
    pa_threaded_mainloop_free(loop_);
  }

  /// Starts a tone with the next samples written; `onWritten` gets the time of that write.
  void beep(std::function<void(TimePoint)> onWritten) {
    pa_threaded_mainloop_lock(loop_);
    onWritten_ = std::move(onWritten);
    toneFramesLeft_ = kToneFrames;
    pa_threaded_mainloop_unlock(loop_);
  }

 private:
  static constexpr int kToneFrames = 4800;

  static void contextChanged(pa_context* context, void* self) {
    if (pa_context_get_state(context) == PA_CONTEXT_READY) static_cast<TonePlayer*>(self)->open();
  }

  void open() {
    const pa_sample_spec mono{.format = PA_SAMPLE_FLOAT32NE, .rate = 48000, .channels = 1};
    const auto unset = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr attributes{unset, 8192, 0, unset, unset};
    stream_ = pa_stream_new(context_, "tone", &mono, nullptr);
    pa_stream_set_write_callback(stream_, &writable, this);
    pa_stream_connect_playback(stream_, sink_, &attributes, PA_STREAM_ADJUST_LATENCY, nullptr,
                               nullptr);
  }

  static void writable(pa_stream* stream, std::size_t bytes, void* self) {
    static_cast<TonePlayer*>(self)->write(stream, bytes / sizeof(float));
  }

  void write(pa_stream* stream, std::size_t frames) {
    std::vector<float> samples(frames, 0.0F);
    for (std::size_t n = 0; n < frames && toneFramesLeft_ > 0; ++n, --toneFramesLeft_) {
      const double turn = 2.0 * std::numbers::pi * toneFramesLeft_ / 48.0;
      samples[n] = static_cast<float>(0.5 * std::sin(turn + 1.0));
    }
    if (onWritten_) std::exchange(onWritten_, nullptr)(std::chrono::steady_clock::now());
    pa_stream_write(stream, samples.data(), frames * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE);
  }

  const char* sink_;
  pa_threaded_mainloop* loop_ = nullptr;
  pa_context* context_ = nullptr;
  pa_stream* stream_ = nullptr;
  int toneFramesLeft_ = 0;
  std::function<void(TimePoint)> onWritten_;
};

}  // namespace bench
