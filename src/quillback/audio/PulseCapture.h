#pragma once

#include <pulse/mainloop-api.h>

#include <memory>
#include <string>

#include "quillback/audio/PulseObjects.h"
#include "quillback/ports/Loop.h"
#include "quillback/ports/Microphone.h"

struct pa_server_info;

namespace voxtrel::quillback {

/// A connection to the sound server and one recording stream from its default source. Both are made
/// and used on a thread of their own, so that a slow or hung server keeps nobody waiting.
/// Thread: the loop's starts and destroys it.  Owns: connection, stream, thread.  Borrows: the loop.
/// Fails by: `onFailure`.
class PulseCapture final : public Capture {
 public:
  PulseCapture(Loop& loop, Microphone::Listener listener);
  PulseCapture(const PulseCapture&) = delete;
  PulseCapture& operator=(const PulseCapture&) = delete;
  ~PulseCapture() override;

  void start();

 private:
  void connect();
  void contextChanged();
  void askForSource();
  void sourceIs(const pa_server_info* server);
  void record(const char* source);
  void streamChanged();
  void read();
  void watchProgress();
  void checkProgress();
  void failAsContext();
  void fail(const std::string& why);

  Loop& loop_;
  // Reports that are on their way to the loop find it gone.
  const std::shared_ptr<const Microphone::Listener> listener_;
  PulsePointer<pa_threaded_mainloop> thread_;
  // Below: only on that thread while it runs.
  PulsePointer<pa_context> context_;
  PulsePointer<pa_stream> stream_;
  pa_time_event* progressTimer_ = nullptr;
  bool hasProgressed_ = false;
  bool hasFailed_ = false;
};

}  // namespace voxtrel::quillback
