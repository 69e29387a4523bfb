#include <fcntl.h>
#include <unistd.h>

#include "common/posix/Pipe.h"

namespace voxtrel {

// There is no pipe2. A child that another thread starts in between closes what it does not know.
int openPipe(std::array<int, 2>& ends) {
  if (::pipe(ends.data()) != 0) return -1;
  for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  return 0;
}

}  // namespace voxtrel
