#include "quillback/audio/SoundFile.h"

#include <utility>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::hours;

constexpr std::int64_t kMaxSamples =
    std::chrono::seconds(SoundFile::kMaxLength).count() * std::int64_t{kSampleRateHz};

std::string maxHours() {
  return std::to_string(SoundFile::kMaxLength.count()) + " hours";
}

}  // namespace

SoundFile::SoundFile(WavFile file)
    : file_(std::move(file)),
      resampler_(file_.rateHz()),
      note_(file_.note()),
      leftSamples_(kMaxSamples) {}

tl::expected<SoundFile, WavError> SoundFile::open(const std::string& path) {
  auto file = WavFile::open(path);
  if (!file) return tl::unexpected(std::move(file.error()));
  const auto length = file->length().value_or(std::chrono::seconds(0));
  if (length > kMaxLength) {
    const std::string found = std::to_string(std::chrono::ceil<hours>(length).count());
    return tl::unexpected(
        WavError{WavError::Kind::tooLong,
                 "its sound is " + found + " hours long; the limit is " + maxHours()});
  }
  return SoundFile(std::move(*file));
}

tl::expected<std::span<const std::int16_t>, WavError> SoundFile::next() {
  while (!isAtEnd_) {
    auto samples = convert();
    if (!samples) return samples;
    if (note_.empty()) note_ = file_.note();
    if (!samples->empty()) return withinLimit(*samples);
  }
  return std::span<const std::int16_t>();
}

/// The samples of one block of the file; the last ones set `isAtEnd_`.
tl::expected<std::span<const std::int16_t>, WavError> SoundFile::convert() {
  const auto block = file_.next();
  if (!block) return tl::unexpected(block.error());
  isAtEnd_ = block->empty();
  return (isAtEnd_ ? resampler_.finish() : resampler_.add(*block)).map_error([](std::string why) {
    return WavError{WavError::Kind::unreadable, std::move(why)};
  });
}

std::span<const std::int16_t> SoundFile::withinLimit(std::span<const std::int16_t> samples) {
  if (std::cmp_less_equal(samples.size(), leftSamples_)) {
    leftSamples_ -= static_cast<std::int64_t>(samples.size());
    return samples;
  }
  isAtEnd_ = true;
  note_ = "The sound is longer than " + maxHours() + ": only these are used.";
  return samples.first(static_cast<std::size_t>(leftSamples_));
}

}  // namespace voxtrel::quillback
