#include "common/base/CheckedCounter.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace voxtrel {

std::int64_t CheckedCounter::increment() {
  if (value_ == std::numeric_limits<std::int64_t>::max()) {
    std::fputs("voxtrel: a counter passed its largest value\n", stderr);
    std::abort();
  }
  return ++value_;
}

}  // namespace voxtrel
