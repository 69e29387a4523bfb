#include "voxtrel/platform/linux/sound/PulseTap.h"

#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/rtclock.h>

#include <array>
#include <chrono>
#include <utility>

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {
namespace {

using Microseconds = std::chrono::duration<pa_usec_t, std::micro>;

/// How long the server may say nothing, while it opens the source or later.
constexpr Microseconds kPatience = std::chrono::seconds(3);

PulseProperties clientProperties() {
  PulseProperties properties(pa_proplist_new());
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Voxtrel");
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, kBundleIdentifier);
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, kBundleIdentifier);
  return properties;
}

}  // namespace

PulseTap::PulseTap(MicrophoneTapOptions options)
    : options_(std::move(options)),
      reblocker_(options_.bufferSizeFrames),
      loop_(pa_threaded_mainloop_new()) {}

PulseTap::~PulseTap() {
  if (!loop_) return;
  pa_threaded_mainloop_stop(loop_.get());  // and waits for its thread
  if (watchdog_ != nullptr) pa_threaded_mainloop_get_api(loop_.get())->time_free(watchdog_);
  stream_.reset();
  context_.reset();
}

void PulseTap::start() {
  if (!loop_) return fail(PA_ERR_INTERNAL);
  pa_threaded_mainloop_set_name(loop_.get(), "microphone");
  pa_mainloop_api_once(
      pa_threaded_mainloop_get_api(loop_.get()),
      [](pa_mainloop_api*, void* tap) { static_cast<PulseTap*>(tap)->connect(); }, this);
  if (pa_threaded_mainloop_start(loop_.get()) < 0) fail(PA_ERR_INTERNAL);
}

void PulseTap::connect() {
  context_.reset(pa_context_new_with_proplist(pa_threaded_mainloop_get_api(loop_.get()), nullptr,
                                              clientProperties().get()));
  if (!context_) return fail(PA_ERR_INTERNAL);
  pa_context_set_state_callback(
      context_.get(), [](pa_context*, void* tap) { static_cast<PulseTap*>(tap)->contextChanged(); },
      this);
  startWatchdog();
  if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    failWithContextError();
  }
}

void PulseTap::contextChanged() {
  switch (pa_context_get_state(context_.get())) {
    case PA_CONTEXT_READY:
      return askForDefaultSource();
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
      return failWithContextError();
    default:
      return;
  }
}

// PulseAudio gives a stream that names no source the one of our last recording, and PipeWire takes
// "@DEFAULT_SOURCE@" for a source that does not exist: so ask for the name.
void PulseTap::askForDefaultSource() {
  PulseOperation question(pa_context_get_server_info(
      context_.get(),
      [](pa_context*, const pa_server_info* server, void* tap) {
        static_cast<PulseTap*>(tap)->defaultSourceIs(server);
      },
      this));
  if (!question) failWithContextError();
}

void PulseTap::defaultSourceIs(const pa_server_info* server) {
  if (server == nullptr) return failWithContextError();
  if (server->default_source_name == nullptr) return fail(PA_ERR_NOENTITY);
  openStream(server->default_source_name);
}

void PulseTap::openStream(const char* source) {
  const pa_sample_spec mono{.format = PA_SAMPLE_FLOAT32NE, .rate = 48000, .channels = 1};
  stream_.reset(pa_stream_new(context_.get(), "Recording overlay", &mono, nullptr));
  if (!stream_) return failWithContextError();
  pa_stream_set_state_callback(
      stream_.get(), [](pa_stream*, void* tap) { static_cast<PulseTap*>(tap)->streamChanged(); },
      this);
  pa_stream_set_read_callback(
      stream_.get(),
      [](pa_stream*, std::size_t, void* tap) { static_cast<PulseTap*>(tap)->readSamples(); }, this);
  // The server rounds this down to microseconds and then to frames; without the frame on top it
  // would send one too few each time, and every block would wait for the next fragment.
  const auto fragmentBytes =
      static_cast<std::uint32_t>((options_.bufferSizeFrames + 1) * sizeof(float));
  const auto unset = static_cast<std::uint32_t>(-1);
  const pa_buffer_attr attributes{unset, unset, unset, unset, fragmentBytes};
  // Channel 0 is then the source's first one and not a mixture of all; PulseAudio wants the one flag
  // for that and PipeWire the other.
  constexpr auto kFlags = static_cast<pa_stream_flags_t>(
      PA_STREAM_FIX_RATE | PA_STREAM_NO_REMAP_CHANNELS | PA_STREAM_NO_REMIX_CHANNELS |
      PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY);
  if (pa_stream_connect_record(stream_.get(), source, &attributes, kFlags) < 0) {
    failWithContextError();
  }
}

void PulseTap::streamChanged() {
  const pa_stream_state_t state = pa_stream_get_state(stream_.get());
  if (state == PA_STREAM_READY) {
    sampleRateHz_ = pa_stream_get_sample_spec(stream_.get())->rate;
  }
  if (state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED) failWithContextError();
}

void PulseTap::readSamples() {
  for (;;) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    if (pa_stream_peek(stream_.get(), &data, &bytes) < 0) return failWithContextError();
    if (bytes == 0) return;  // all has been read
    // No data with a length is a gap in the recording.
    if (data != nullptr) deliver({static_cast<const float*>(data), bytes / sizeof(float)});
    pa_stream_drop(stream_.get());
  }
}

void PulseTap::deliver(std::span<const float> samples) {
  heardSinceCheck_ = true;
  if (hasFailed_) return;
  reblocker_.push(samples, [&](std::span<const float> block) {
    const std::array<const float*, 1> channels{block.data()};
    options_.onBuffer({channels, block.size(), sampleRateHz_});
  });
}

void PulseTap::startWatchdog() {
  watchdog_ = pa_context_rttime_new(
      context_.get(), pa_rtclock_now() + kPatience.count(),
      [](pa_mainloop_api*, pa_time_event*, const timeval*, void* tap) {
        static_cast<PulseTap*>(tap)->checkProgress();
      },
      this);
}

void PulseTap::checkProgress() {
  if (hasFailed_) return;
  if (!std::exchange(heardSinceCheck_, false)) return fail(PA_ERR_TIMEOUT);
  pa_context_rttime_restart(context_.get(), watchdog_, pa_rtclock_now() + kPatience.count());
}

void PulseTap::fail(int error) {
  if (std::exchange(hasFailed_, true)) return;
  options_.onFailure(pa_strerror(error));
}

void PulseTap::failWithContextError() {
  fail(pa_context_errno(context_.get()));
}

}  // namespace voxtrel
