#include "common/posix/Pipe.h"

#include <fcntl.h>

#include <cerrno>

namespace voxtrel {
namespace {

/// A process that was started with a standard stream closed gets that stream's number from the next
/// open. A child could then not tell the pipe from the stream.
FileDescriptor aboveStandardStreams(FileDescriptor descriptor) {
  constexpr int kMinNumber = STDERR_FILENO + 1;
  if (descriptor.get() >= kMinNumber) return descriptor;
  return FileDescriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, kMinNumber));
}

tl::unexpected<std::error_code> lastError() {
  return tl::unexpected(std::error_code(errno, std::generic_category()));
}

}  // namespace

tl::expected<Pipe, std::error_code> Pipe::open() {
  std::array<int, 2> ends{};
  if (openPipe(ends) != 0) return lastError();
  Pipe pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  for (FileDescriptor* end : {&pipe.readEnd, &pipe.writeEnd}) {
    *end = aboveStandardStreams(std::move(*end));
    if (!end->isOpen()) return lastError();
  }
  return pipe;
}

}  // namespace voxtrel
