#include <fcntl.h>
#include <unistd.h>

#include "common/posix/Pipe.h"

namespace voxtrel {

// Not pipe(): another thread could start a child before we mark the ends.
int openPipe(std::array<int, 2>& ends) {
  return ::pipe2(ends.data(), O_CLOEXEC);
}

}  // namespace voxtrel
