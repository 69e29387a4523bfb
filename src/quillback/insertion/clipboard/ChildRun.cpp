#include "quillback/insertion/clipboard/ChildRun.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

#include "common/posix/SpawnedProgram.h"
#include "common/posix/WriteAll.h"

namespace voxtrel::quillback {
namespace {

/// A file in memory with the text. Unlike a pipe it takes any length without waiting for the reader.
FileDescriptor fileWith(const std::string& text) {
  FileDescriptor file(memfd_create("quillback-text", MFD_CLOEXEC));
  if (!file.isOpen() || !writeAll(file.get(), text)) return {};
  ::lseek(file.get(), 0, SEEK_SET);
  return file;
}

}  // namespace

std::unique_ptr<ChildRun> ChildRun::start(const std::vector<std::string>& words,
                                          const std::string& input, Loop& loop, OnEnd onEnd) {
  const FileDescriptor file = fileWith(input);
  if (!file.isOpen()) return nullptr;
  const auto child = spawnProgram(words, file.get());
  if (!child) return nullptr;
  std::unique_ptr<ChildRun> run(new ChildRun(*child, std::move(onEnd)));
  run->watch_ = loop.watch(run->process_.get(), [self = run.get()] { self->handleEnd(); });
  return run;
}

ChildRun::ChildRun(int processId, OnEnd onEnd)
    : processId_(processId),
      process_(static_cast<int>(syscall(SYS_pidfd_open, processId, 0))),
      onEnd_(std::move(onEnd)) {}

void ChildRun::handleEnd() {
  int status = 0;
  if (waitpid(processId_, &status, WNOHANG) == 0) return;
  watch_.reset();
  const OnEnd onEnd = std::exchange(onEnd_, nullptr);
  if (onEnd) onEnd(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

}  // namespace voxtrel::quillback
