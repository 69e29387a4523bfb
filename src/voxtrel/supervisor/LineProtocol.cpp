#include "voxtrel/supervisor/LineProtocol.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "common/base/Lines.h"

namespace voxtrel {
namespace {

constexpr std::string_view kRecording = "Recording...";
constexpr std::string_view kProcessing = "Processing";
constexpr std::string_view kProcessed = "audio";
constexpr std::string_view kReady = "Ready.";
constexpr std::string_view kEncoded = "encode=";
constexpr std::array<std::string_view, 5> kErrors = {"[quillback] ERROR", "[quillback] Failed",
                                                     "Audio capture failed", "Accessibility",
                                                     "Microphone permission"};
constexpr std::string_view kTranscription = "[gpu-decode] text: \"";

bool contains(std::string_view line, std::string_view text) {
  return line.find(text) != std::string_view::npos;
}

std::optional<AppState> stateOf(std::string_view line) {
  if (contains(line, kRecording)) return AppState::recording;
  if (contains(line, kProcessing) && contains(line, kProcessed)) return AppState::processing;
  if (contains(line, kReady) || contains(line, kEncoded)) return AppState::idle;
  return std::nullopt;
}

/// The text between the first marker and the last quote of the line. If no quote follows the first
/// marker, there is no later marker either, because a marker ends in a quote.
std::optional<std::string_view> transcriptionOf(std::string_view line) {
  const std::size_t opening = line.find(kTranscription);
  if (opening == std::string_view::npos) return std::nullopt;
  const std::string_view text = line.substr(opening + kTranscription.size());
  const std::size_t closing = text.rfind('"');
  if (closing == std::string_view::npos) return std::nullopt;
  return text.substr(0, closing);
}

/// Distance between the two bytes of an anchor. With this one, eight different pairs are enough for
/// all markers, six of them start with the same byte, and ordinary lines rarely contain one.
constexpr std::size_t kGap = 4;

/// Two bytes of a marker, kGap apart.
struct Anchor {
  std::string_view marker;
  std::size_t offset;  ///< of the first of the two bytes

  constexpr char first() const { return marker[offset]; }
  constexpr char second() const { return marker[offset + kGap]; }
};

/// Every line with an effect contains one of these ("audio" matters only together with "Processing").
constexpr std::array<Anchor, 10> kAnchors = {{{kRecording, 2},         // c...i
                                              {kProcessing, 3},        // c...i
                                              {kReady, 0},             // R...y
                                              {kEncoded, 2},           // c...=
                                              {kErrors[0], 8},         // c...E
                                              {kErrors[1], 8},         // c...F
                                              {kErrors[2], 6},         // c...u
                                              {kErrors[3], 2},         // c...i
                                              {kErrors[4], 2},         // c...h
                                              {kTranscription, 15}}};  // x..."

constexpr std::size_t kBlockBytes = 64;
using Flags = std::array<unsigned char, kBlockBytes>;

constexpr unsigned char kFlagged = 0xFF;

/// The result of a vector comparison: all bits set if the bytes are equal, else none. Arithmetic,
/// because GCC turns a conditional into branches, ten times as slow.
inline unsigned char equality(char left, char right) {
  return static_cast<unsigned char>(-static_cast<int>(left == right));
}

/// kFlagged if the two bytes of any anchor stand at `at`, else 0. Without branches and with masks
/// instead of bool, so that compilers turn the loop over a block into vector code.
template <std::size_t... kIndex>
inline unsigned char anchorAt(const char* at, std::index_sequence<kIndex...>) {
  return static_cast<unsigned char>(
      ((equality(at[0], kAnchors[kIndex].first()) & equality(at[kGap], kAnchors[kIndex].second())) |
       ...));
}

/// Flags the anchors that begin in the block; reads kGap bytes beyond it.
inline bool flagAnchors(const char* block, Flags& flags) {
  for (std::size_t i = 0; i < kBlockBytes; ++i) {
    flags[i] = anchorAt(block + i, std::make_index_sequence<kAnchors.size()>());
  }
  std::uint64_t any = 0;
  for (std::size_t i = 0; i < kBlockBytes; i += sizeof any) {
    std::uint64_t word = 0;
    std::memcpy(&word, flags.data() + i, sizeof word);
    any |= word;
  }
  return any != 0;
}

/// The first flag that is set at or after `from`; kBlockBytes if there is none.
std::size_t nextFlag(const Flags& flags, std::size_t from) {
  const void* flag = std::memchr(flags.data() + from, kFlagged, kBlockBytes - from);
  if (flag == nullptr) return kBlockBytes;
  return static_cast<std::size_t>(static_cast<const unsigned char*>(flag) - flags.data());
}

/// Whether a marker has its anchor at `position`, which is flagged.
bool isMarkerAt(std::string_view chunk, std::size_t position) {
  return std::any_of(kAnchors.begin(), kAnchors.end(), [=](const Anchor& anchor) {
    return chunk[position] == anchor.first() && chunk[position + kGap] == anchor.second() &&
           position >= anchor.offset &&
           chunk.substr(position - anchor.offset).starts_with(anchor.marker);
  });
}

/// Position of the first marker's anchor at or after `from`; npos if there is none.
std::size_t findMarker(std::string_view chunk, std::size_t from) {
  Flags flags;
  std::array<char, kBlockBytes + kGap> tail;
  for (; from < chunk.size(); from += kBlockBytes) {
    const std::size_t left = chunk.size() - from;
    const char* block = chunk.data() + from;
    if (left < tail.size()) {  // zeros follow the last bytes, and no anchor holds a zero
      tail.fill('\0');
      std::copy_n(block, left, tail.data());
      block = tail.data();
    }
    if (!flagAnchors(block, flags)) continue;
    for (std::size_t i = nextFlag(flags, 0); i < kBlockBytes; i = nextFlag(flags, i + 1)) {
      if (isMarkerAt(chunk, from + i)) return from + i;
    }
  }
  return std::string_view::npos;
}

}  // namespace

LineEffects interpretLine(std::string_view line) {
  return {stateOf(line),
          std::any_of(kErrors.begin(), kErrors.end(),
                      [line](auto error) { return contains(line, error); }),
          transcriptionOf(line)};
}

void interpretChunk(std::string_view chunk,
                    const std::function<void(std::string_view line, const LineEffects&)>& apply) {
  std::size_t position = findMarker(chunk, 0);
  while (position != std::string_view::npos) {
    const std::string_view line = lineAround(chunk, position);
    const LineEffects effects = interpretLine(line);
    if (effects.state || effects.isError || effects.transcription) apply(line, effects);
    position =
        findMarker(chunk, static_cast<std::size_t>(line.data() - chunk.data()) + line.size());
  }
}

std::string WordHider::withoutWords(std::string_view bytes) {
  std::string shown;
  for (const char byte : bytes) {
    if (byte == '\n') isInWords_ = false;
    if (isInWords_) continue;
    shown += byte;
    // Only the first byte of the marker is a bracket, so a mismatch starts again.
    if (byte != kTranscription[matched_]) matched_ = 0;
    if (byte == kTranscription[matched_]) ++matched_;
    if (matched_ < kTranscription.size()) continue;
    matched_ = 0;
    isInWords_ = true;
    shown += "…\"";
  }
  return shown;
}

}  // namespace voxtrel
