#include "voxtrel/platform/posix/Pipe.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "voxtrel/platform/posix/ChildSetup.h"

namespace voxtrel {
namespace {

constexpr int kLowestNumber = STDERR_FILENO + 1;

/// A process that was started with a standard stream closed gets its number from the next open; a
/// child could then not tell the pipe from the stream.
void moveAboveStandardStreams(FileDescriptor& descriptor) {
  if (descriptor.number() >= kLowestNumber) return;
  FileDescriptor moved(::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, kLowestNumber));
  if (moved.number() < 0) throw std::system_error(errno, std::generic_category());
  descriptor = std::move(moved);
}

}  // namespace

Pipe Pipe::open() {
  std::array<int, 2> ends{};
  if (!openPipe(ends)) throw std::system_error(errno, std::generic_category());
  Pipe pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  moveAboveStandardStreams(pipe.readEnd);
  moveAboveStandardStreams(pipe.writeEnd);
  return pipe;
}

}  // namespace voxtrel
