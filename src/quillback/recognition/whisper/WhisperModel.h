#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/speech/SpeechModel.h"

struct whisper_context;

namespace voxtrel::quillback {

/// A Whisper model. Its encoder, made for 30 s, is run over the length of the piece only.
/// Thread: one.  Owns: the weights in memory.
/// Fails by: a LoadReport that is not usable; later by `hasFailed`.
class WhisperModel final : public SpeechModel {
 public:
  explicit WhisperModel(RecogniserOptions options);
  WhisperModel(const WhisperModel&) = delete;
  WhisperModel& operator=(const WhisperModel&) = delete;
  ~WhisperModel() override;

  LoadReport load() override;
  void begin() override { language_.clear(); }
  Heard recognise(std::span<const float> samples, const std::atomic<bool>& isDropped) override;
  [[nodiscard]] std::size_t maxSamples() const override;

  /// How many positions of 20 ms the encoder runs over for this many samples. The library's fast
  /// attention reads multiples of 256 positions: of other sizes it would hear what an earlier piece left
  /// behind the end. From less than 512 the decoder repeats single words.
  static int encoderPositions(std::size_t samples);
  /// How many tokens the words in this many samples can have; a decoder that says more is in a loop.
  static int maxTokens(std::size_t samples);

 private:
  using Token = int;  // whisper_token
  using Tokens = std::vector<Token>;
  struct Free {
    void operator()(whisper_context* context) const;
  };
  /// A word of the settings, and the tokens that it may begin with.
  struct Expected {
    std::string word;
    Tokens starts;
    bool isNear = false;  ///< the decoder nearly began it, or did
  };

  bool encode(std::span<const float> samples);
  [[nodiscard]] Tokens tokensOf(const std::string& text) const;
  [[nodiscard]] Tokens promptOf(const std::string& text) const;
  [[nodiscard]] std::vector<Expected> expectedWords() const;
  bool decode(const Tokens& tokens, int position);
  [[nodiscard]] std::span<const float> logits(std::size_t inputs) const;
  [[nodiscard]] Token bestToken(std::span<const float> logits, bool isFirst) const;
  void noteNearWords(std::span<const float> logits, Token best);
  [[nodiscard]] bool findsLanguage() const;
  [[nodiscard]] bool knows(const std::string& language) const;
  [[nodiscard]] int languages() const;
  void detectLanguage();
  Tokens opening(const Tokens& prompt);
  Heard decodeAll(const Tokens& prompt, std::size_t maxTokens, const std::atomic<bool>& isDropped);
  void addExpectedWords(std::string& text, std::size_t maxTokens,
                        const std::atomic<bool>& isDropped);

  RecogniserOptions options_;
  std::unique_ptr<whisper_context, Free> model_;
  std::string language_;  ///< that was found in the utterance; empty until then
  Tokens prompt_;         ///< what the settings put before the words
  std::vector<Expected> expected_;
  Token blank_ = 0;
};

/// The length of `tokens` without what is repeated at their end; their whole length if nothing is.
std::size_t lengthWithoutRepetition(std::span<const int> tokens);

}  // namespace voxtrel::quillback
