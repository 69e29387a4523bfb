#include "common/pulse/RecordingStream.h"

#include <utility>

#include "common/pulse/PulseLibrary.h"

namespace voxtrel {
namespace {

using Reason = RecordingFailure::Reason;

/// Of a stream that has a loop: it has none without the library.
const PulseLibrary& pulse() {
  return *PulseLibrary::get();
}

struct FreeProperties {
  void operator()(pa_proplist* properties) const { pulse().pa_proplist_free(properties); }
};
using Properties = std::unique_ptr<pa_proplist, FreeProperties>;

Properties clientProperties(const RecordingOptions& options) {
  Properties properties(pulse().pa_proplist_new());
  pulse().pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME,
                           options.applicationName.c_str());
  if (!options.applicationId.empty()) {
    pulse().pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID,
                             options.applicationId.c_str());
    pulse().pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME,
                             options.applicationId.c_str());
  }
  return properties;
}

pa_sample_spec sampleSpec(const RecordingOptions& options) {
  const bool isFloat = std::holds_alternative<RecordingListener<float>>(options.onSamples);
  return {.format = isFloat ? PA_SAMPLE_FLOAT32NE : PA_SAMPLE_S16NE,
          .rate = options.rateHz,
          .channels = 1};
}

pa_stream_flags_t streamFlags(const RecordingOptions& options) {
  // DONT_MOVE: a moved stream would not report that its first source vanished.
  unsigned flags = PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE;
  if (options.keepsSourceRate) flags |= PA_STREAM_FIX_RATE;
  // PulseAudio needs the one flag for the first channel alone, PipeWire the other.
  if (options.takesFirstChannel) flags |= PA_STREAM_NO_REMAP_CHANNELS | PA_STREAM_NO_REMIX_CHANNELS;
  return static_cast<pa_stream_flags_t>(flags);
}

pa_usec_t fromNow(std::chrono::microseconds duration) {
  return pulse().pa_rtclock_now() + static_cast<pa_usec_t>(duration.count());
}

Reason reasonOf(int error) {
  switch (error) {
    case PA_ERR_CONNECTIONREFUSED:
      return Reason::noServer;
    case PA_ERR_NOENTITY:
      return Reason::noSource;
    case PA_ERR_TIMEOUT:
      return Reason::stalled;
    default:
      return Reason::other;
  }
}

// libpulse's callbacks get the stream as their last argument.
RecordingStream* self(void* stream) {
  return static_cast<RecordingStream*>(stream);
}

}  // namespace

void RecordingStream::Release::operator()(pa_threaded_mainloop* loop) const {
  pulse().pa_threaded_mainloop_free(loop);
}

void RecordingStream::Release::operator()(pa_operation* operation) const {
  pulse().pa_operation_unref(operation);
}

void RecordingStream::Release::operator()(pa_context* context) const {
  pulse().pa_context_set_state_callback(context, nullptr, nullptr);
  pulse().pa_context_disconnect(context);
  pulse().pa_context_unref(context);
}

void RecordingStream::Release::operator()(pa_stream* stream) const {
  pulse().pa_stream_set_state_callback(stream, nullptr, nullptr);
  pulse().pa_stream_set_read_callback(stream, nullptr, nullptr);
  pulse().pa_stream_disconnect(stream);
  pulse().pa_stream_unref(stream);
}

RecordingStream::RecordingStream(RecordingOptions options) : options_(std::move(options)) {
  if (PulseLibrary::get() == nullptr) {
    hasFailed_ = true;
    options_.onFailure({Reason::noServer, "libpulse is not installed"});
    return;
  }
  loop_.reset(pulse().pa_threaded_mainloop_new());
  start();
}

RecordingStream::~RecordingStream() {
  if (loop_) pulse().pa_threaded_mainloop_stop(loop_.get());  // joins its thread
  if (stallTimer_ != nullptr) {
    pulse().pa_threaded_mainloop_get_api(loop_.get())->time_free(stallTimer_);
  }
}

void RecordingStream::start() {
  if (!loop_) return fail(Reason::noMemory, PA_ERR_INTERNAL);
  pulse().pa_threaded_mainloop_set_name(loop_.get(), "microphone");
  pulse().pa_mainloop_api_once(
      pulse().pa_threaded_mainloop_get_api(loop_.get()),
      [](pa_mainloop_api*, void* stream) { self(stream)->connect(); }, this);
  if (pulse().pa_threaded_mainloop_start(loop_.get()) < 0) fail(Reason::noThread, PA_ERR_INTERNAL);
}

void RecordingStream::connect() {
  context_.reset(
      pulse().pa_context_new_with_proplist(pulse().pa_threaded_mainloop_get_api(loop_.get()),
                                           nullptr, clientProperties(options_).get()));
  if (!context_) return fail(Reason::noMemory, PA_ERR_INTERNAL);
  pulse().pa_context_set_state_callback(
      context_.get(), [](pa_context*, void* stream) { self(stream)->contextChanged(); }, this);
  startStallTimer();
  if (pulse().pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    failWithContextError();
  }
}

void RecordingStream::contextChanged() {
  const pa_context_state_t state = pulse().pa_context_get_state(context_.get());
  if (state == PA_CONTEXT_READY) askForDefaultSource();
  if (!PA_CONTEXT_IS_GOOD(state)) failWithContextError();
}

// The stream has to name its source: without a name PulseAudio takes the source of our last
// recording, and PipeWire knows no "@DEFAULT_SOURCE@".
void RecordingStream::askForDefaultSource() {
  const Handle<pa_operation> request(pulse().pa_context_get_server_info(
      context_.get(),
      [](pa_context*, const pa_server_info* server, void* stream) {
        self(stream)->openDefaultSource(server);
      },
      this));
  if (!request) failWithContextError();
}

void RecordingStream::openDefaultSource(const pa_server_info* server) {
  if (server == nullptr) return failWithContextError();
  if (server->default_source_name == nullptr) return fail(PA_ERR_NOENTITY);
  openStream(server->default_source_name);
}

void RecordingStream::openStream(const char* source) {
  const pa_sample_spec mono = sampleSpec(options_);
  stream_.reset(pulse().pa_stream_new(context_.get(), options_.streamName.c_str(), &mono, nullptr));
  if (!stream_) return failWithContextError();
  pulse().pa_stream_set_state_callback(
      stream_.get(), [](pa_stream*, void* stream) { self(stream)->streamChanged(); }, this);
  pulse().pa_stream_set_read_callback(
      stream_.get(), [](pa_stream*, std::size_t, void* stream) { self(stream)->readSamples(); },
      this);
  constexpr auto kUnset = static_cast<std::uint32_t>(-1);
  const auto fragmentBytes =
      static_cast<std::uint32_t>(options_.fragmentFrames * pulse().pa_frame_size(&mono));
  const pa_buffer_attr attributes{kUnset, kUnset, kUnset, kUnset, fragmentBytes};
  if (pulse().pa_stream_connect_record(stream_.get(), source, &attributes, streamFlags(options_)) <
      0) {
    failWithContextError();
  }
}

void RecordingStream::streamChanged() {
  const pa_stream_state_t state = pulse().pa_stream_get_state(stream_.get());
  if (state == PA_STREAM_READY) {
    rateHz_ = static_cast<int>(pulse().pa_stream_get_sample_spec(stream_.get())->rate);
  }
  if (!PA_STREAM_IS_GOOD(state)) failWithContextError();
}

void RecordingStream::readSamples() {
  for (;;) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    if (pulse().pa_stream_peek(stream_.get(), &data, &bytes) < 0) return failWithContextError();
    if (bytes == 0) return;  // all has been read
    // A length without data is a gap in the recording.
    if (data != nullptr && !hasFailed_) deliver(data, bytes);
    pulse().pa_stream_drop(stream_.get());
  }
}

void RecordingStream::deliver(const void* data, std::size_t bytes) {
  hasProgressed_ = true;
  std::visit(
      [&]<class Sample>(const RecordingListener<Sample>& onSamples) {
        onSamples({static_cast<const Sample*>(data), bytes / sizeof(Sample)}, rateHz_);
      },
      options_.onSamples);
}

void RecordingStream::startStallTimer() {
  stallTimer_ = pulse().pa_context_rttime_new(
      context_.get(), fromNow(options_.stallLimit),
      [](pa_mainloop_api*, pa_time_event*, const timeval*, void* stream) {
        self(stream)->checkProgress();
      },
      this);
}

void RecordingStream::checkProgress() {
  if (hasFailed_) return;
  if (!std::exchange(hasProgressed_, false)) return fail(PA_ERR_TIMEOUT);
  pulse().pa_context_rttime_restart(context_.get(), stallTimer_, fromNow(options_.stallLimit));
}

void RecordingStream::failWithContextError() {
  fail(pulse().pa_context_errno(context_.get()));
}

void RecordingStream::fail(int error) {
  fail(reasonOf(error), error);
}

void RecordingStream::fail(Reason reason, int error) {
  if (std::exchange(hasFailed_, true)) return;
  options_.onFailure({reason, pulse().pa_strerror(error)});
}

}  // namespace voxtrel
