#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quillback/recognition/speech/PieceCutter.h"
#include "quillback/recognition/speech/SpeechModel.h"

namespace voxtrel::quillback {

/// Recognises speech with a model that needs whole pieces: long speech is cut at pauses, and each piece
/// is recognised while the next one is spoken, so that little is left to do at the end. Sound without
/// speech is never given to the model, which would make up words. What is speech is judged with the
/// loudest sound brought to -6 dB, because a badly set microphone must lose no word.
/// Thread: one.  Owns: the model and the detector.
/// Fails by: the model's LoadReport; later by empty text.
class PiecewiseBackend final : public RecogniserBackend {
 public:
  /// May return null; then the loudness decides, and a line says so.
  using LoadDetector = std::function<std::unique_ptr<VoiceDetector>()>;

  PiecewiseBackend(std::unique_ptr<SpeechModel> model, LoadDetector loadDetector);

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override;
  void feed(std::span<const std::int16_t> samples) override;
  Transcription finish() override;

 private:
  void addFrame();
  void endPiece(const std::vector<float>& frames, std::size_t count);
  [[nodiscard]] bool hasQuietSpeech(std::span<const float> samples);
  void recognise(std::span<const float> samples, PieceCutter::Frames frames);
  Heard recogniseAll(std::span<const float> samples, PieceCutter::Frames frames);
  void report(std::string_view line);

  const std::unique_ptr<SpeechModel> model_;
  const LoadDetector loadDetector_;
  std::unique_ptr<VoiceDetector> detector_;
  PieceCutter cutter_;
  const std::atomic<bool>* isDropped_ = nullptr;
  std::vector<float> samples_;     ///< of the piece that has not ended
  std::size_t judgedSamples_ = 0;  ///< of samples_, in whole frames
  float peak_ = 0;                 ///< of the utterance so far
  Transcription result_;
};

/// Goes by loudness alone: frames less than 30 dB below the loudest so far count as speech. For where no
/// better detector is there.
/// Thread: one.
class LoudnessDetector final : public VoiceDetector {
 public:
  void reset() override { loudest_ = 0; }
  float probability(std::span<const float> frame) override;

 private:
  float loudest_ = 0;  ///< mean square
};

/// `text` without what describes sound instead of speech: remarks in square brackets or asterisks, notes
/// of music, and a remark in parentheses that is the whole text.
std::string withoutRemarks(const std::string& text);

}  // namespace voxtrel::quillback
