#include "quillback/recognition/whisper/WeightsFile.h"

#include <ggml.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <optional>

namespace voxtrel::quillback {
namespace {

using Result = tl::expected<void, std::string>;
using Family = RecogniserOptions::Family;

tl::unexpected<std::string> wrong(std::string what) {
  return tl::unexpected(std::move(what));
}

/// A file that is read and skipped through, and says when it is too short.
/// Thread: one.  Owns: the open file.
class Walk {
 public:
  explicit Walk(const std::string& path) : file_(path, std::ios::binary | std::ios::ate) {
    size_ = file_ ? static_cast<std::int64_t>(file_.tellg()) : -1;
    file_.seekg(0);
  }

  bool isOpen() const { return size_ >= 0; }
  bool isAtEnd() const { return at_ == size_; }
  std::optional<std::int32_t> number() {
    std::array<char, 4> bytes{};
    if (!file_.read(bytes.data(), bytes.size())) return std::nullopt;
    at_ += 4;
    std::uint32_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) {
      value = value << 8U | static_cast<unsigned char>(bytes.at(i));
    }
    return static_cast<std::int32_t>(value);
  }
  bool skip(std::int64_t count) {
    // A seek throws away what was read ahead: it would cost as much as all else for each token.
    constexpr std::int64_t kNear = 4096;
    if (count < 0 || count > size_ - at_) return false;
    at_ += count;
    return static_cast<bool>(count < kNear ? file_.ignore(count) : file_.seekg(at_));
  }
  /// Skips `a` times `b` numbers.
  bool skipNumbers(std::int64_t a, std::int64_t b = 1) { return skip(a * b * 4); }

 private:
  std::ifstream file_;
  std::int64_t size_ = -1;
  std::int64_t at_ = 0;
};

/// A size in the header, and the values that true models have.
struct Bounds {
  std::int32_t least;
  std::int32_t most;
};

// In the file's order.
constexpr std::array kWhisperHeader = {
    Bounds{51'864, 51'866},  // vocabulary: English, 99 languages, 100 languages
    Bounds{1500, 1500},      // encoder: positions, width, heads, layers
    Bounds{64, 4096},       Bounds{1, 64}, Bounds{1, 64}, Bounds{448, 448},  // decoder: likewise
    Bounds{64, 4096},       Bounds{1, 64}, Bounds{1, 64}, Bounds{80, 128},  // bands of the spectrum
    Bounds{0, 100'000}};                                                    // kind of numbers
constexpr std::array kParakeetHeader = {
    Bounds{100, 100'000},  // vocabulary
    Bounds{1, 100'000},    // encoder: positions, width, heads, layers
    Bounds{64, 4096},     Bounds{1, 64},
    Bounds{1, 64},        Bounds{40, 256},  // bands of the spectrum
    Bounds{0, 100'000},                     // kind of numbers
    Bounds{64, 4096},                       // transform, subsampling, convolution
    Bounds{1, 64},        Bounds{1, 4096},
    Bounds{1, 255},       Bounds{64, 4096},  // predictor: width, layers
    Bounds{1, 16},        Bounds{1, 64},     // durations
    Bounds{1, 100'000}};                     // tokens at most

template <std::size_t kCount>
std::optional<std::array<std::int32_t, kCount>> readHeader(
    Walk& walk, const std::array<Bounds, kCount>& bounds) {
  std::array<std::int32_t, kCount> values{};
  for (std::size_t at = 0; at < kCount; ++at) {
    const auto value = walk.number();
    if (!value || *value < bounds.at(at).least || *value > bounds.at(at).most) return std::nullopt;
    values.at(at) = *value;
  }
  return values;
}

/// A table of numbers with its two sizes before it.
bool skipTable(Walk& walk) {
  constexpr std::int32_t kMaxSide = 100'000;
  const auto rows = walk.number();
  const auto columns = walk.number();
  const auto isSide = [](std::int32_t size) { return size > 0 && size < kMaxSide; };
  return rows && columns && isSide(*rows) && isSide(*columns) && walk.skipNumbers(*rows, *columns);
}

Result skipWhisperHeader(Walk& walk) {
  const auto header = readHeader(walk, kWhisperHeader);
  if (!header) return wrong("this is no model of Whisper");
  constexpr std::size_t kEncoderWidth = 2;
  constexpr std::size_t kDecoderWidth = 6;
  if (header->at(kEncoderWidth) != header->at(kDecoderWidth)) {
    return wrong("the encoder and the decoder do not fit each other");
  }
  if (!skipTable(walk)) return wrong("the file ends within its filters");
  return {};
}

Result skipParakeetHeader(Walk& walk) {
  const auto header = readHeader(walk, kParakeetHeader);
  if (!header) return wrong("this is no model of Parakeet");
  constexpr std::size_t kDurations = 13;
  const bool hasFilters = skipTable(walk);
  const auto window = hasFilters ? walk.number() : std::nullopt;
  if (!window || !walk.skipNumbers(*window)) return wrong("the file ends within its filters");
  for (std::int32_t at = 0; at < header->at(kDurations); ++at) {
    constexpr std::int32_t kMaxFrames = 100;
    // The decoder moves on by them: backwards it would never end.
    const auto duration = walk.number();
    if (!duration) return wrong("the file ends within its durations");
    if (*duration < 0 || *duration > kMaxFrames) return wrong("its durations are damaged");
  }
  return {};
}

Result skipVocabulary(Walk& walk) {
  constexpr std::int32_t kMaxBytes = 1000;
  const auto count = walk.number();
  bool isWhole = count && *count > 0;
  for (std::int32_t at = 0; isWhole && at < *count; ++at) {
    const auto length = walk.number();
    isWhole = length && *length <= kMaxBytes && walk.skip(*length);
  }
  return isWhole ? Result() : wrong("the file ends within its vocabulary");
}

/// Whether one tensor is there with all its numbers.
bool skipTensor(Walk& walk) {
  constexpr std::int32_t kMaxDimensions = 4;
  const auto dimensions = walk.number();
  const auto nameLength = walk.number();
  const auto type = walk.number();
  if (!dimensions || *dimensions < 1 || *dimensions > kMaxDimensions) return false;
  if (!nameLength || !type || *type < 0 || *type >= GGML_TYPE_COUNT) return false;
  constexpr std::int64_t kMaxNumbers = std::int64_t{1} << 40;
  std::int64_t count = 1;
  for (std::int32_t at = 0; at < *dimensions; ++at) {
    const auto size = walk.number();
    if (!size || *size <= 0 || count > kMaxNumbers / *size) return false;
    count *= *size;
  }
  const auto kind = static_cast<ggml_type>(*type);
  if (ggml_blck_size(kind) == 0 || !walk.skip(*nameLength)) return false;
  return walk.skip(count / ggml_blck_size(kind) * static_cast<std::int64_t>(ggml_type_size(kind)));
}

Result skipTensors(Walk& walk) {
  if (walk.isAtEnd()) return wrong("the file ends before its weights");
  while (!walk.isAtEnd()) {
    if (!skipTensor(walk)) return wrong("the file ends within its weights, or they are damaged");
  }
  return {};
}

}  // namespace

Result checkWeights(const std::string& path, Family family) {
  constexpr std::int32_t kMagic = 0x67676d6c;
  Walk walk(path);
  if (!walk.isOpen()) return wrong("the file cannot be read");
  if (walk.number() != kMagic) return wrong("this is no file of weights");
  return (family == Family::whisper ? skipWhisperHeader(walk) : skipParakeetHeader(walk))
      .and_then([&walk] { return skipVocabulary(walk); })
      .and_then([&walk] { return skipTensors(walk); });
}

}  // namespace voxtrel::quillback
