#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace voxtrel::quillback::test {

/// Builds the bytes of WAV files, valid and broken, piece by piece.
class WavBytes {
 public:
  WavBytes& text(std::string_view letters) {
    bytes_.insert(bytes_.end(), letters.begin(), letters.end());
    return *this;
  }

  /// Appends `value` as `count` little-endian bytes.
  WavBytes& number(std::uint64_t value, int count) {
    for (; count > 0; --count, value >>= 8) bytes_.push_back(static_cast<std::uint8_t>(value));
    return *this;
  }

  WavBytes& riff() { return text("RIFF").number(0, 4).text("WAVE"); }

  WavBytes& format(unsigned encoding, unsigned channels, unsigned rateHz, unsigned bits) {
    const unsigned frame = channels * bits / 8;
    text("fmt ").number(16, 4).number(encoding, 2).number(channels, 2).number(rateHz, 4);
    return number(rateHz * frame, 4).number(frame, 2).number(bits, 2);
  }

  WavBytes& extensibleFormat(unsigned encoding, unsigned channels, unsigned rateHz, unsigned bits) {
    const unsigned frame = channels * bits / 8;
    text("fmt ").number(40, 4).number(0xFFFE, 2).number(channels, 2).number(rateHz, 4);
    number(rateHz * frame, 4).number(frame, 2).number(bits, 2);
    number(22, 2).number(bits, 2).number(3, 4).number(encoding, 2);
    // The rest of the subformat's identifier.
    return number(0x0010000000000000, 8).number(0x719B3800AA, 5).number(0, 1);
  }

  WavBytes& data(std::uint32_t statedBytes) { return text("data").number(statedBytes, 4); }

  std::vector<std::uint8_t> bytes() const { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace voxtrel::quillback::test
