#include <gtest/gtest.h>

#include <cstdint>

#include "common/base/Fatal.h"

namespace voxtrel {
namespace {

TEST(CheckedCounterDeathTest, EndsTheProcessInsteadOfWrapping) {
  CheckedCounter counter(INT64_MAX - 1);
  EXPECT_EQ(counter.increment(), INT64_MAX);
  EXPECT_DEATH(counter.increment(), "passed its largest value");
}

TEST(FatalErrorDeathTest, SaysWhyOnStandardError) {
  EXPECT_DEATH(fatalError("no way to continue"), "voxtrel: fatal: no way to continue\n");
}

}  // namespace
}  // namespace voxtrel
