#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quillback/recognition/Whisper.h"

struct whisper_context;
struct whisper_state;
struct whisper_full_params;

namespace voxtrel::quillback {

/// Whisper through whisper.cpp's library: collects all samples, then recognises them as a whole.
/// Thread: one.  Owns: the model.
/// Fails by: a LoadReport with an error line; later by empty text.
class WhisperBackend final : public RecogniserBackend {
 public:
  /// `threads`: how many the library computes with.
  WhisperBackend(std::string weightsFile, WhisperOptions options, int threads);
  WhisperBackend(const WhisperBackend&) = delete;
  WhisperBackend& operator=(const WhisperBackend&) = delete;
  ~WhisperBackend() override;

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override;
  void feed(std::span<const std::int16_t> samples) override;
  Transcription finish() override;

 private:
  struct Free {
    void operator()(whisper_context* context) const;
  };

  static bool isDropped(void* backend);
  static bool mayEncode(whisper_context* context, whisper_state* state, void* backend);
  whisper_full_params parameters();
  std::string text() const;
  std::chrono::microseconds encodeTime() const;

  const std::string weightsFile_;
  WhisperOptions options_;
  const int threads_;
  std::unique_ptr<whisper_context, Free> model_;
  std::vector<float> samples_;
  const std::atomic<bool>* isDropped_ = nullptr;
  int encodings_ = 0;  ///< 30 s windows encoded for this utterance
};

/// Where the kernel describes the processors.
inline constexpr const char* kCpuFolder = "/sys/devices/system/cpu";

/// Number of processor cores in `cpuFolder` (laid out as kCpuFolder); the hardware threads of a
/// core count once. Without a description the system's count of processors; at least 1.
int physicalCores(const char* cpuFolder);

}  // namespace voxtrel::quillback
