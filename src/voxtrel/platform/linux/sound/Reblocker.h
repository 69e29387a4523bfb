#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace voxtrel {

/// Cuts a stream of pieces of any size into blocks of one size. A piece of exactly one block is handed
/// on at once and the samples still waiting are dropped: kept, they would delay every later block by
/// one piece.
/// Thread: one at a time.  Owns: the samples of the incomplete block.
class Reblocker {
 public:
  using OnBlock = std::function<void(std::span<const float> block)>;

  explicit Reblocker(std::size_t blockFrames) : blockFrames_(blockFrames) {
    waiting_.reserve(blockFrames);
  }

  /// Calls `onBlock` for every block that `samples` completes, in order; a block is valid during the
  /// call.
  void feed(std::span<const float> samples, const OnBlock& onBlock);

 private:
  std::size_t blockFrames_;
  std::vector<float> waiting_;
};

}  // namespace voxtrel
