#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "quillback/audio/WavFormat.h"

namespace voxtrel::quillback {

/// Why there is no sound.
struct WavError {
  enum class Kind {
    unreadable,  ///< there is no such file, or its bytes cannot be read
    notWav,      ///< not a WAV file, or one of an unsupported kind
    tooLong,     ///< longer than SoundFile::kMaxLength
  };

  Kind kind;
  std::string message;  ///< a sentence without its full stop
};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

/// A RIFF WAV file that is read block by block, so that memory does not grow with its length. Integer
/// samples of 8, 16, 24 or 32 bits or floating point of 32 or 64, all channels averaged into one. Unknown
/// chunks are skipped. A file that was cut short, or whose length was never filled in, gives the samples
/// that are there; pipes work too. (libsndfile takes an unset length for an empty file and has no such
/// notes.)
/// Thread: one.  Owns: the open file.
/// Fails by: a WavError.
class WavFile {
 public:
  static tl::expected<WavFile, WavError> open(const std::string& path);
  /// From the beginning of an open file.
  static tl::expected<WavFile, WavError> read(OpenFile file);

  /// kMinRateHz to kMaxRateHz.
  int rateHz() const { return static_cast<int>(format_.rateHz); }
  /// Nothing if the file is a pipe or a device.
  std::optional<std::chrono::seconds> length() const;
  /// A sentence if the file contradicts its header; else empty. That a pipe does is known at its end.
  const std::string& note() const { return note_; }
  /// The next samples, from -1 to 1, until the next call. None: the end.
  tl::expected<std::span<const float>, WavError> next();

 private:
  explicit WavFile(OpenFile file);

  tl::expected<void, WavError> findSamples();
  tl::expected<WavChunk, WavError> nextChunk();
  tl::expected<void, WavError> readFormat(std::uint32_t statedBytes);
  tl::expected<void, WavError> beginSamples(std::uint32_t statedBytes);
  tl::expected<void, WavError> skip(std::uint64_t bytes);
  tl::expected<std::span<const std::uint8_t>, WavError> readUpTo(std::size_t bytes);

  OpenFile file_;
  std::optional<std::uint64_t> leftBytes_;  ///< of the file; nothing if unknown
  std::uint64_t sampleBytes_ = 0;           ///< that are to be read, at most
  bool isLengthStated_ = true;
  WavFormat format_;
  bool hasFormat_ = false;
  std::string note_;
  std::vector<std::uint8_t> bytes_;
  std::vector<float> samples_;
};

}  // namespace voxtrel::quillback
