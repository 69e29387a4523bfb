#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "quillback/model/HttpTransfer.h"
#include "quillback/model/ModelPin.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Options of `quillback setup`.
struct SetupOptions {
  std::string home;  ///< the user's; the store is below it
  std::string model = "large-v3";
  std::string baseUrl;      ///< QUILLBACK_MODEL_URL; empty: the pin's own
  bool hasWhisper = false;  ///< whether this build can use the weights
  std::string version;      ///< of the program, for the manifest and the server

  TransferLimits limits = {};
  std::vector<ModelPin> pins = pinnedModels();
  std::string certificates = {};  ///< file of trusted authorities; empty: the system's
  /// Called with the name of each step after which a crash leaves another state.
  std::function<void(std::string_view step)> onStep = [](std::string_view) {};
};

/// Downloads the model into the store and prints progress. Returns the exit status (SetupExit).
/// After any interruption the next run resumes: FILE.part grows, is verified and becomes FILE, and
/// manifest.json is written last. A second setup waits for the first. SIGTERM, SIGINT and SIGHUP
/// end it.
/// Thread: the main one, before others are started; it blocks.
int runSetup(const SetupOptions& options, Output& output);

}  // namespace voxtrel::quillback
