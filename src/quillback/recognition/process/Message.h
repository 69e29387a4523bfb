#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tl/expected.hpp>

#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

/// What the engine and its recogniser's process send each other. Both run the same executable, so
/// numbers are sent as they lie in memory.
struct Message {
  enum class Kind : std::uint8_t {
    begin = 1,  ///< to the recogniser: an utterance starts
    samples,    ///< to the recogniser: its next samples
    finish,     ///< to the recogniser, which answers `result`
    drop,       ///< to the recogniser, after SIGUSR1; it answers `dropped`
    loaded,     ///< from the recogniser, first of all: its LoadReport
    result,     ///< from the recogniser: a Transcription
    dropped     ///< from the recogniser: nothing follows for this utterance
  };

  Kind kind{};
  std::string content;
};

/// The longest content that is accepted.
inline constexpr std::size_t kMaxMessageBytes = 1 << 20;

/// The bytes to send.
std::string encoded(const Message& message);

Message samplesMessage(std::span<const std::int16_t> samples);
Message loadedMessage(const LoadReport& report);
Message resultMessage(const Transcription& result);

/// None if the message is of another kind or its content is broken.
std::optional<std::vector<std::int16_t>> readSamples(const Message& message);
std::optional<LoadReport> readLoaded(const Message& message);
std::optional<Transcription> readResult(const Message& message);

/// Cuts received bytes into messages.
/// Thread: one.
class MessageReader {
 public:
  struct Broken {};

  void append(std::string_view bytes);
  /// The next message; none until its last byte has arrived. Once broken, always broken.
  tl::expected<std::optional<Message>, Broken> next();

 private:
  std::string bytes_;
  std::size_t start_ = 0;  ///< of the next message
};

}  // namespace voxtrel::quillback
