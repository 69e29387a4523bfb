#pragma once

#include <cstdio>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <tl/expected.hpp>

#include "quillback/audio/Resampler.h"
#include "quillback/audio/WavFile.h"

namespace voxtrel::quillback::test {

/// All the sound of a WAV file.
struct WavSound {
  std::vector<float> samples;
  int rateHz = 0;
  std::string note;
};

inline tl::expected<WavSound, WavError> readAll(tl::expected<WavFile, WavError> file) {
  if (!file) return tl::unexpected(std::move(file.error()));
  WavSound sound;
  sound.rateHz = file->rateHz();
  for (;;) {
    const auto block = file->next();
    if (!block) return tl::unexpected(block.error());
    if (block->empty()) break;
    sound.samples.insert(sound.samples.end(), block->begin(), block->end());
  }
  sound.note = file->note();
  return sound;
}

inline tl::expected<WavSound, WavError> readWav(const std::string& path) {
  return readAll(WavFile::open(path));
}

/// The file in memory. Fails by: the message.
inline tl::expected<WavSound, std::string> parseWav(std::vector<std::uint8_t> bytes) {
  bytes.reserve(1);  // there is an address even for none
  OpenFile file(::fmemopen(bytes.data(), bytes.size(), "rb"));
  return readAll(WavFile::read(std::move(file))).map_error([](const WavError& error) {
    return error.message;
  });
}

/// All samples at kSampleRateHz.
inline std::vector<std::int16_t> resampled(std::span<const float> samples, int rateHz) {
  Resampler resampler(rateHz);
  std::vector<std::int16_t> all;
  const auto keep = [&all](const Resampler::Converted& some) {
    if (some) all.insert(all.end(), some->begin(), some->end());
  };
  keep(resampler.add(samples));
  keep(resampler.finish());
  return all;
}

}  // namespace voxtrel::quillback::test
