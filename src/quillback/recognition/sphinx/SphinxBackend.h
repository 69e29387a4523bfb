#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

/// The embedded recogniser: PocketSphinx with its English model. It decodes while samples arrive.
/// Long speech is decoded in parts that end at pauses, so `finish` waits for the last part only.
/// Thread: one.  Owns: the model.
/// Fails by: a LoadReport with an error line; later by empty text.
class SphinxBackend final : public RecogniserBackend {
 public:
  /// The first block, 0.2 s: enough for a first estimate of the voice.
  static constexpr std::size_t kFirstBlockSamples = 3200;
  /// Every later block. Blocks have a fixed size so that the text does not depend on how the
  /// samples arrive.
  static constexpr std::size_t kBlockSamples = 320;
  /// A part of this length (8 s) ends at the next pause. Shorter parts would cut sentences.
  static constexpr std::size_t kPartSamples = 128'000;
  /// A part of this length (30 s) ends without a pause.
  static constexpr std::size_t kMaxPartSamples = 480'000;

  /// `modelFolder` holds the acoustic model, the language model and the dictionary.
  explicit SphinxBackend(std::string modelFolder);
  SphinxBackend(const SphinxBackend&) = delete;
  SphinxBackend& operator=(const SphinxBackend&) = delete;
  ~SphinxBackend() override;

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override;
  void feed(std::span<const std::int16_t> samples) override;
  Transcription finish() override;
  void drop() override;

 private:
  struct Model;

  void decodeBlock(std::span<const std::int16_t> samples);
  void endPart();

  const std::string modelFolder_;
  std::unique_ptr<Model> model_;
  std::vector<std::int16_t> block_;  ///< not yet full
  std::size_t blockSamples_ = kFirstBlockSamples;
  bool isInPart_ = false;
  std::size_t partSamples_ = 0;
  std::string text_;
};

/// The model folder that this program was built for.
std::string sphinxModelFolder();

}  // namespace voxtrel::quillback
