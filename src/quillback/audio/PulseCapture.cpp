#include "quillback/audio/PulseCapture.h"

#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/rtclock.h>

#include <chrono>
#include <cstdint>
#include <span>
#include <utility>

namespace voxtrel::quillback {
namespace {

/// How long the server may keep silent, while it connects, opens the source or later.
constexpr pa_usec_t kPatienceUs = 3'000'000;
/// 10 ms a piece: the end of the speech is here soon after it was spoken.
constexpr std::uint32_t kFragmentBytes = kSampleRateHz / 100 * sizeof(std::int16_t);

/// libpulse's calls come to this object.
PulseCapture* self(void* capture) {
  return static_cast<PulseCapture*>(capture);
}

}  // namespace

PulseCapture::PulseCapture(Loop& loop, Microphone::Listener listener)
    : loop_(loop),
      listener_(std::make_shared<Microphone::Listener>(std::move(listener))),
      thread_(pa_threaded_mainloop_new()) {}

PulseCapture::~PulseCapture() {
  if (!thread_) return;
  pa_threaded_mainloop_stop(thread_.get());  // and waits for its end
  if (progressTimer_ != nullptr) {
    pa_threaded_mainloop_get_api(thread_.get())->time_free(progressTimer_);
  }
  stream_.reset();
  context_.reset();
}

void PulseCapture::start() {
  if (!thread_) return fail("no memory");
  pa_threaded_mainloop_set_name(thread_.get(), "microphone");
  pa_mainloop_api_once(
      pa_threaded_mainloop_get_api(thread_.get()),
      [](pa_mainloop_api*, void* capture) { self(capture)->connect(); }, this);
  if (pa_threaded_mainloop_start(thread_.get()) < 0) fail("no thread can be started");
}

void PulseCapture::connect() {
  context_.reset(pa_context_new(pa_threaded_mainloop_get_api(thread_.get()), "quillback"));
  if (!context_) return fail("no memory");
  pa_context_set_state_callback(
      context_.get(), [](pa_context*, void* capture) { self(capture)->contextChanged(); }, this);
  watchProgress();
  if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    failAsContext();
  }
}

void PulseCapture::contextChanged() {
  const pa_context_state_t state = pa_context_get_state(context_.get());
  if (state == PA_CONTEXT_READY) askForSource();
  if (!PA_CONTEXT_IS_GOOD(state)) failAsContext();
}

// A stream that names no source gets the one that a stream of this name had last from PulseAudio, and
// "@DEFAULT_SOURCE@" is no source to PipeWire.
void PulseCapture::askForSource() {
  const PulsePointer<pa_operation> question(pa_context_get_server_info(
      context_.get(),
      [](pa_context*, const pa_server_info* server, void* capture) {
        self(capture)->sourceIs(server);
      },
      this));
  if (!question) failAsContext();
}

void PulseCapture::sourceIs(const pa_server_info* server) {
  if (server == nullptr) return failAsContext();
  if (server->default_source_name == nullptr) return fail("there is no microphone");
  record(server->default_source_name);
}

void PulseCapture::record(const char* source) {
  const pa_sample_spec mono{.format = PA_SAMPLE_S16NE, .rate = kSampleRateHz, .channels = 1};
  stream_.reset(pa_stream_new(context_.get(), "Dictation", &mono, nullptr));
  if (!stream_) return failAsContext();
  pa_stream_set_state_callback(
      stream_.get(), [](pa_stream*, void* capture) { self(capture)->streamChanged(); }, this);
  pa_stream_set_read_callback(
      stream_.get(), [](pa_stream*, std::size_t, void* capture) { self(capture)->read(); }, this);
  constexpr auto kUnset = static_cast<std::uint32_t>(-1);
  const pa_buffer_attr attributes{kUnset, kUnset, kUnset, kUnset, kFragmentBytes};
  // Moved to another source, a stream would go on without a word about the one that vanished.
  constexpr auto kFlags =
      static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
  if (pa_stream_connect_record(stream_.get(), source, &attributes, kFlags) < 0) failAsContext();
}

void PulseCapture::streamChanged() {
  const pa_stream_state_t state = pa_stream_get_state(stream_.get());
  if (PA_STREAM_IS_GOOD(state)) return;
  if (state == PA_STREAM_TERMINATED) return fail("the microphone is gone");
  failAsContext();
}

void PulseCapture::read() {
  for (;;) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    if (pa_stream_peek(stream_.get(), &data, &bytes) < 0) return failAsContext();
    if (bytes == 0) return;  // all has been read
    // No data with a length is a gap in the recording.
    if (data != nullptr && !hasFailed_) {
      hasProgressed_ = true;
      listener_->onSamples({static_cast<const std::int16_t*>(data), bytes / sizeof(std::int16_t)});
    }
    pa_stream_drop(stream_.get());
  }
}

void PulseCapture::watchProgress() {
  progressTimer_ = pa_context_rttime_new(
      context_.get(), pa_rtclock_now() + kPatienceUs,
      [](pa_mainloop_api*, pa_time_event*, const timeval*, void* capture) {
        self(capture)->checkProgress();
      },
      this);
}

void PulseCapture::checkProgress() {
  if (hasFailed_) return;
  if (!std::exchange(hasProgressed_, false)) return fail("nothing comes from the microphone");
  pa_context_rttime_restart(context_.get(), progressTimer_, pa_rtclock_now() + kPatienceUs);
}

void PulseCapture::failAsContext() {
  const int error = pa_context_errno(context_.get());
  if (error == PA_ERR_CONNECTIONREFUSED) return fail("there is no sound server");
  if (error == PA_ERR_NOENTITY) return fail("there is no microphone");
  fail(pa_strerror(error));
}

void PulseCapture::fail(const std::string& why) {
  if (std::exchange(hasFailed_, true)) return;
  loop_.post([weak = std::weak_ptr(listener_), why] {
    if (const auto listener = weak.lock()) listener->onFailure(why);
  });
}

}  // namespace voxtrel::quillback
