#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

#include <tl/expected.hpp>

#include "quillback/audio/Resampler.h"
#include "quillback/audio/WavFile.h"

namespace voxtrel::quillback {

/// The sound of a WAV file as a recogniser takes it, block by block: memory does not grow with its length.
/// Thread: one.  Owns: the open file.
/// Fails by: a WavError.
class SoundFile {
 public:
  /// No longer file is opened. Of a pipe, whose length is unknown, what comes later is left out.
  static constexpr std::chrono::hours kMaxLength{12};

  static tl::expected<SoundFile, WavError> open(const std::string& path);

  /// A sentence about what is wrong with the file; else empty. It may come with any block.
  const std::string& note() const { return note_; }
  /// The next mono samples at kSampleRateHz, until the next call. None: the end.
  tl::expected<std::span<const std::int16_t>, WavError> next();

 private:
  explicit SoundFile(WavFile file);

  tl::expected<std::span<const std::int16_t>, WavError> convert();
  std::span<const std::int16_t> withinLimit(std::span<const std::int16_t> samples);

  WavFile file_;
  Resampler resampler_;
  std::string note_;
  std::int64_t leftSamples_;
  bool isAtEnd_ = false;
};

}  // namespace voxtrel::quillback
