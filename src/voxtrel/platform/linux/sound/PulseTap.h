#pragma once

#include <pulse/mainloop-api.h>

#include "voxtrel/platform/Microphone.h"
#include "voxtrel/platform/linux/sound/PulseHandles.h"
#include "voxtrel/platform/linux/sound/Reblocker.h"

struct pa_server_info;

namespace voxtrel {

/// One recording stream from the server's default source, mono from the source's first channel.
/// Everything, the connection included, is made and used on a thread of its own, so that a slow or
/// dead server keeps nobody waiting; other threads only start and stop it.
/// Thread: one that starts and destroys it.  Owns: connection, stream, thread.
/// Fails by: `onFailure` on its own thread.
class PulseTap final : public MicrophoneTap {
 public:
  explicit PulseTap(MicrophoneTapOptions options);
  PulseTap(const PulseTap&) = delete;
  PulseTap& operator=(const PulseTap&) = delete;
  ~PulseTap() override;

  void start();

 private:
  void connect();
  void contextChanged();
  void askForDefaultSource();
  void defaultSourceIs(const pa_server_info* server);
  void openStream(const char* source);
  void streamChanged();
  void readSamples();
  void deliver(std::span<const float> samples);
  void startWatchdog();
  void checkProgress();
  void fail(int error);
  void failWithContextError();

  MicrophoneTapOptions options_;
  Reblocker reblocker_;
  PulseLoop loop_;
  // Below: only on the loop's thread while that runs.
  PulseContext context_;
  PulseStream stream_;
  pa_time_event* watchdog_ = nullptr;
  double sampleRateHz_ = 0;
  bool heardSinceCheck_ = false;
  bool hasFailed_ = false;
};

}  // namespace voxtrel
