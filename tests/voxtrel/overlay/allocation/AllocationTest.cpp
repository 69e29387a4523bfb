#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "support/Samples.h"
#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"

namespace {

std::atomic<int> allocations = 0;

void* counted(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

}  // namespace

// Replaced in the whole program, so that the test sees every allocation.
void* operator new(std::size_t size) {
  return counted(size);
}
void* operator new[](std::size_t size) {
  return counted(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace voxtrel {
namespace {

TEST(Analysis, AllocatesNothingForABlock) {
  const PlainVectorMath math{};
  FFTBarView view({0, 0, 90, 21}, math);
  const std::vector<float> samples = testing::noise(1);
  const testing::BufferOver block(samples);

  const int before = allocations;
  EXPECT_EQ(std::make_unique<int>(7) != nullptr, true);
  ASSERT_EQ(allocations, before + 1) << "the count would see an allocation";
  for (int i = 0; i < 100; ++i) view.processAudio(block);
  EXPECT_EQ(allocations, before + 1);
}

}  // namespace
}  // namespace voxtrel
