#include "platform/posix/ChildSupervision.h"

#include <memory>
#include <system_error>

#include "platform/posix/ChildLifetime.h"
#include "platform/posix/OutputReader.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/PosixChildProcess.h"
#include "platform/posix/SpawnedChild.h"

namespace voxtrel {
namespace {

/// What one running child needs of this side.
struct Started {
  std::shared_ptr<ChildLifetime> lifetime;
  std::unique_ptr<OutputReader> reader;
};

/// The reader comes first: a child whose output nobody can read must not exist.
Started start(const ChildOptions& options) {
  Pipe output = Pipe::open();
  auto reader = std::make_unique<OutputReader>(std::move(output.readEnd), options.onOutput);
  const pid_t pid = spawnChild(options, output.writeEnd.number());
  return {std::make_shared<ChildLifetime>(pid), std::move(reader)};
}

}  // namespace

LaunchFailure ChildSupervision::failure(const std::error_code& reason) const {
  return {"Cannot start " + options_.executable + ": " + reason.message()};
}

void ChildSupervision::run() {
  Started child;
  try {
    child = start(options_);
  } catch (const std::system_error& error) {
    started_.set_value(failure(error.code()));
    return;
  }
  started_.set_value(std::make_shared<PosixChildProcess>(child.lifetime));
  const int status = child.lifetime->reap();
  child.reader->finish();
  if (options_.onExit) options_.onExit(status);
}

}  // namespace voxtrel
