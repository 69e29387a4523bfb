#pragma once

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <functional>
#include <span>

namespace bench {

/// A minimal recording from the default source with libpulse.
class BareCapture {
 public:
  using OnSamples = std::function<void(std::span<const float>)>;

  explicit BareCapture(OnSamples onSamples) : onSamples_(std::move(onSamples)) {
    loop_ = pa_threaded_mainloop_new();
    context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "bare");
    pa_context_set_state_callback(context_, &contextChanged, this);
    pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    pa_threaded_mainloop_start(loop_);
  }
  BareCapture(const BareCapture&) = delete;
  BareCapture& operator=(const BareCapture&) = delete;
  ~BareCapture() {
    pa_threaded_mainloop_stop(loop_);
    if (stream_ != nullptr) pa_stream_unref(stream_);
    pa_context_disconnect(context_);
    pa_context_unref(context_);
    pa_threaded_mainloop_free(loop_);
  }

 private:
  static void contextChanged(pa_context* context, void* self) {
    if (pa_context_get_state(context) == PA_CONTEXT_READY) static_cast<BareCapture*>(self)->open();
  }

  void open() {
    const pa_sample_spec mono{.format = PA_SAMPLE_FLOAT32NE, .rate = 48000, .channels = 1};
    const auto unset = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr attributes{unset, unset, unset, unset, 2052};  // 512 frames
    stream_ = pa_stream_new(context_, "bare", &mono, nullptr);
    pa_stream_set_read_callback(stream_, &readable, this);
    pa_stream_connect_record(stream_, nullptr, &attributes, PA_STREAM_ADJUST_LATENCY);
  }

  static void readable(pa_stream* stream, std::size_t, void* self) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &bytes) == 0) {
      if (bytes == 0) return;
      if (data != nullptr) {
        static_cast<BareCapture*>(self)->onSamples_(
            {static_cast<const float*>(data), bytes / sizeof(float)});
      }
      pa_stream_drop(stream);
    }
  }

  OnSamples onSamples_;
  pa_threaded_mainloop* loop_ = nullptr;
  pa_context* context_ = nullptr;
  pa_stream* stream_ = nullptr;
};

}  // namespace bench
