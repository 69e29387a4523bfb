#include "quillback/app/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace voxtrel::quillback {

void keepStandardDescriptorsOpen() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is always the one that is given out: the one that is missing.
    if (::fcntl(fd, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
  }
}

}  // namespace voxtrel::quillback
