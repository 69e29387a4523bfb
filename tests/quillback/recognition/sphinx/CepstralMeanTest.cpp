#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "quillback/recognition/sphinx/CepstralMean.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;
using testing::FloatNear;

TEST(CepstralMean, StartsAsTheModelsMean) {
  EXPECT_THAT(CepstralMean({41, -5}).mean(), ElementsAre(41, -5));
}

TEST(CepstralMean, IsHalfWayAfterAsManyFramesAsThePriorCounts) {
  CepstralMean mean({40, 0});
  for (int frame = 0; frame < static_cast<int>(CepstralMean::kPriorFrames); ++frame) {
    mean.add(std::array{20.0F, 6.0F});
  }
  EXPECT_THAT(mean.mean(), ElementsAre(FloatNear(30, 1e-4F), FloatNear(3, 1e-4F)));
}

TEST(CepstralMean, ForgetsTheLastUtteranceAtAReset) {
  CepstralMean mean({40});
  mean.add(std::array{1.0F});
  mean.reset();
  EXPECT_THAT(mean.mean(), ElementsAre(40));
  mean.add(std::array{40.0F});
  EXPECT_THAT(mean.mean(), ElementsAre(FloatNear(40, 1e-4F)));
}

}  // namespace
}  // namespace voxtrel::quillback
