#pragma once

#include <memory>
#include <string>

#include "quillback/insertion/clipboard/ChildRun.h"
#include "quillback/model/commands/ModelCommands.h"
#include "quillback/notifications/Notifier.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// Tells the user once, by a line and a notification, that the model of the application's window is too
/// slow on this machine, and which one to use. Only with complete weights of that model, and only where no
/// other model was chosen. A file in the store's parent folder remembers that it was told.
/// Thread: the loop's.  Owns: the running programs.  Borrows: Loop, Output (must outlive this).
/// Fails by: telling nothing.
class SlowModelAdvice {
 public:
  SlowModelAdvice(Loop& loop, Output& output, std::string home);

  /// Measures the machine if that is needed for these settings: about a tenth of a second on all
  /// processors, in another process, because the library may end it.
  void giveIfNeeded(const EngineSettings& settings);

 private:
  void tell(int exitStatus);

  Loop& loop_;
  Output& output_;
  const std::string home_;
  Notifier notifier_;
  std::unique_ptr<ChildRun> measuring_;
};

/// What that process does: measures, and leaves the advice in a file. Returns the exit status.
int writeSlowModelAdvice(const ModelContext& context);

}  // namespace voxtrel::quillback
