#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "quillback/model/HttpTransfer.h"
#include "quillback/model/ModelPin.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// What `quillback setup` is to do.
struct SetupOptions {
  std::string home;  ///< the user's; the store is below it
  std::string model = "large-v3";
  std::string baseUrl;      ///< QUILLBACK_MODEL_URL; empty: the pin's own
  bool hasWhisper = false;  ///< whether this build can use the weights
  std::string version;      ///< of the program, for the manifest and the server

  TransferLimits limits = {};
  std::vector<ModelPin> pins = pinnedModels();
  std::string certificates = {};  ///< file of the authorities to trust; empty: the system's
  /// Called after each step that a crash could follow, with its name.
  std::function<void(std::string_view step)> onStep = [](std::string_view) {};
};

/// Makes the model ready in the store, and prints what it does. Returns the exit status (SetupExit).
/// Whenever it is ended, the next run goes on: FILE.part grows, is verified and becomes FILE, and
/// manifest.json is written last. A second setup waits for the first one.
/// Thread: the process's main one, before others are started; it blocks. SIGTERM, SIGINT and SIGHUP
/// end it.
int runSetup(const SetupOptions& options, Output& output);

}  // namespace voxtrel::quillback
