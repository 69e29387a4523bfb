#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

#include "voxtrel/platform/linux/sound/Reblocker.h"

namespace voxtrel {
namespace {

struct ReblockerTest : ::testing::Test {
  Reblocker reblocker{512};
  std::vector<std::vector<float>> blocks;

  void feed(std::span<const float> samples) {
    reblocker.feed(samples,
                   [this](auto block) { blocks.emplace_back(block.begin(), block.end()); });
  }
};

std::vector<float> counting(std::size_t count) {
  std::vector<float> samples(count);
  std::iota(samples.begin(), samples.end(), 0.0F);
  return samples;
}

TEST_F(ReblockerTest, HandsOnAWholeBlockAtOnce) {
  const std::vector<float> samples = counting(512);
  feed(samples);
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0], samples);
}

TEST_F(ReblockerTest, WaitsUntilABlockIsFull) {
  const std::vector<float> samples = counting(512);
  feed(std::span(samples).first(511));
  feed({});
  EXPECT_TRUE(blocks.empty());
  feed(std::span(samples).last(1));
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0], samples);
}

TEST_F(ReblockerTest, AWholeBlockReplacesTheSamplesThatWait) {
  const std::vector<float> rest(100, -1.0F), samples = counting(512);
  feed(rest);
  feed(samples);
  feed(samples);
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_EQ(blocks[0], samples);
  EXPECT_EQ(blocks[1], samples);
}

TEST_F(ReblockerTest, LosesAndRepeatsNothingForAnySizesOfThePieces) {
  const std::vector<float> samples = counting(100 * 512 + 77);
  std::mt19937 generator(1);
  std::span<const float> rest = samples;
  while (!rest.empty()) {
    std::size_t size = std::min<std::size_t>(generator() % 1500, rest.size());
    if (size == 512) --size;
    feed(rest.first(size));
    rest = rest.subspan(size);
  }
  ASSERT_EQ(blocks.size(), 100U);
  std::vector<float> joined;
  for (const auto& block : blocks) {
    ASSERT_EQ(block.size(), 512U);
    joined.insert(joined.end(), block.begin(), block.end());
  }
  EXPECT_TRUE(std::equal(joined.begin(), joined.end(), samples.begin()));
}

}  // namespace
}  // namespace voxtrel
