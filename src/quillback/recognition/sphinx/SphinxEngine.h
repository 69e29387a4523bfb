#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quillback/recognition/SpeechEngine.h"

namespace voxtrel::quillback {

/// The embedded recogniser: PocketSphinx with its English model, which decodes while it hears. Long
/// speech is decoded in parts that end where the speaker pauses, so that the end never waits for more
/// than the last of them.
/// Thread: one.  Owns: the model.
/// Fails by: a LoadReport with an error line; text that is not there.
class SphinxEngine final : public SpeechEngine {
 public:
  /// Held back at the beginning, until there is a first idea of the voice: 0.2 s.
  static constexpr std::size_t kFirstBlockSamples = 3200;
  /// Heard and decoded at once, however the samples arrive, so that the words do not depend on that.
  static constexpr std::size_t kBlockSamples = 320;
  /// A part this long ends at the next pause: 8 s. Shorter ones would cut sentences.
  static constexpr std::size_t kPartSamples = 128'000;
  /// A part ends here in any case: 30 s.
  static constexpr std::size_t kLongestPartSamples = 480'000;

  /// `modelFolder`: where the acoustic model, the language model and the dictionary are.
  explicit SphinxEngine(std::string modelFolder);
  SphinxEngine(const SphinxEngine&) = delete;
  SphinxEngine& operator=(const SphinxEngine&) = delete;
  ~SphinxEngine() override;

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override;
  void hear(std::span<const std::int16_t> samples) override;
  Transcription finish() override;

 private:
  struct Model;

  void decodeBlock(std::span<const std::int16_t> samples);
  void endPart();

  const std::string modelFolder_;
  std::unique_ptr<Model> model_;
  std::vector<std::int16_t> waiting_;  ///< less than a block
  std::size_t blockSamples_ = kFirstBlockSamples;
  bool isInPart_ = false;
  std::size_t partSamples_ = 0;
  std::string text_;
};

/// The folder of the model that this program was built for.
std::string sphinxModelFolder();

}  // namespace voxtrel::quillback
