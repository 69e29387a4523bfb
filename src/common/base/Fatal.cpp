#include "common/base/Fatal.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace voxtrel {

void fatalError(const char* message) {
  std::fprintf(stderr, "voxtrel: fatal: %s\n", message);
  std::abort();
}

std::int64_t CheckedCounter::increment() {
  if (value_ == std::numeric_limits<std::int64_t>::max()) {
    fatalError("a counter passed its largest value");
  }
  return ++value_;
}

}  // namespace voxtrel
