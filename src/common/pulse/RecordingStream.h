#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <variant>

struct pa_context;
struct pa_operation;
struct pa_server_info;
struct pa_stream;
struct pa_threaded_mainloop;
struct pa_time_event;

namespace voxtrel {

/// Why a recording could not start, or ended.
struct RecordingFailure {
  enum class Reason { noServer, noSource, stalled, noMemory, noThread, other };

  Reason reason = Reason::other;
  std::string description;  ///< libpulse's text for it
};

/// Gets mono samples, oldest first, valid during the call; `rateHz` is their sample rate.
template <class Sample>
using RecordingListener = std::function<void(std::span<const Sample> samples, int rateHz)>;

struct RecordingOptions {
  std::string applicationName;         ///< shown by mixers
  std::string applicationId;           ///< desktop id and icon name; default: none
  std::string streamName;              ///< shown by mixers
  std::uint32_t rateHz = 48000;        ///< sample rate; the server resamples
  bool keepsSourceRate = false;        ///< use the source's own rate instead of `rateHz`
  bool takesFirstChannel = false;      ///< default: the server mixes all channels into one
  std::uint32_t fragmentFrames = 512;  ///< frames per delivery; the server may round down
  /// Longest time without samples, connecting included. Silence counts as samples.
  std::chrono::milliseconds stallLimit = std::chrono::seconds(3);

  /// Called on the stream's own thread. The one that is set decides the sample format.
  std::variant<RecordingListener<float>, RecordingListener<std::int16_t>> onSamples;
  /// Called at most once, on the stream's own thread or, if that cannot start, from the constructor.
  /// No samples follow.
  std::function<void(const RecordingFailure& failure)> onFailure;
};

/// One recording from the sound server's default source, over PulseAudio's protocol (PipeWire speaks
/// it too). Connecting, recording and waiting happen on the stream's own thread, so a slow or hung
/// server blocks no other. A recording stays with its source when the default changes.
/// Thread: one constructs and destroys it; no callback runs after that.
/// Owns: connection, stream, thread.
/// Fails by: `onFailure`; it does not reconnect.
class RecordingStream {
 public:
  /// Starts connecting and returns at once.
  explicit RecordingStream(RecordingOptions options);
  RecordingStream(const RecordingStream&) = delete;
  RecordingStream& operator=(const RecordingStream&) = delete;
  ~RecordingStream();

 private:
  struct Release {
    void operator()(pa_threaded_mainloop* loop) const;
    void operator()(pa_operation* operation) const;
    void operator()(pa_context* context) const;
    void operator()(pa_stream* stream) const;
  };
  template <class Object>
  using Handle = std::unique_ptr<Object, Release>;

  void start();
  void connect();
  void contextChanged();
  void askForDefaultSource();
  void openDefaultSource(const pa_server_info* server);
  void openStream(const char* source);
  void streamChanged();
  void readSamples();
  void deliver(const void* data, std::size_t bytes);
  void startStallTimer();
  void checkProgress();
  void failWithContextError();
  void fail(int error);
  void fail(RecordingFailure::Reason reason, int error);

  const RecordingOptions options_;
  Handle<pa_threaded_mainloop> loop_;
  // Below: used only on the loop's thread while it runs.
  Handle<pa_context> context_;
  Handle<pa_stream> stream_;
  pa_time_event* stallTimer_ = nullptr;
  int rateHz_ = 0;
  bool hasProgressed_ = false;
  bool hasFailed_ = false;
};

}  // namespace voxtrel
