#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace voxtrel {

/// Makes blocks of one size from a stream that comes in pieces of any size. A piece that is a block
/// goes on at once, and what was waiting to be filled up is dropped: kept, it would hold every later
/// block back until the piece after it, for as long as the capture runs.
/// Thread: one at a time.  Owns: the samples of the block that is not yet full.
class Reblocker {
 public:
  using TakeBlock = std::function<void(std::span<const float> block)>;

  explicit Reblocker(std::size_t blockFrames) : blockFrames_(blockFrames) {
    waiting_.reserve(blockFrames);
  }

  /// Hands over every block that `samples` completes, in order; a block is valid during the call.
  void push(std::span<const float> samples, const TakeBlock& takeBlock);

 private:
  std::size_t blockFrames_;
  std::vector<float> waiting_;
};

}  // namespace voxtrel
