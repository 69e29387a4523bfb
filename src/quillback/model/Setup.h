#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <tl/expected.hpp>

#include "quillback/model/ChosenModel.h"
#include "quillback/model/HttpTransfer.h"
#include "quillback/model/ModelPin.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Stands for the model that suits the machine; never a model's own name.
inline constexpr std::string_view kAdvised = "advised";

/// Options of `quillback setup`.
struct SetupOptions {
  std::string home;  ///< the user's; the store is below it
  std::string model = std::string(kWindowModel);
  std::string chosen = {};  ///< [engine] model of the settings; replaces the window's model
  std::string file = {};    ///< the user's own weights, which are copied; empty: download
  std::string baseUrl;      ///< QUILLBACK_MODEL_URL; empty: kModelServer
  bool hasWhisper = false;  ///< whether this build can use the weights
  std::string version;      ///< of the program, for the manifest and the server

  TransferLimits limits = {};
  std::vector<ModelPin> pins = pinnedModels();
  FilePin voiceDetection = voiceDetectionPin();
  std::string certificates = {};  ///< file of trusted authorities; empty: the system's
  /// Loads weights for a trial and says what is wrong with them. Null: the user's own weights are
  /// not tried.
  std::function<tl::expected<void, std::string>(const std::string& path, ModelFamily family)>
      tryWeights = {};
  /// Called with the name of each step after which a crash leaves another state. Those of the voice
  /// detection's download begin with "voice ".
  std::function<void(std::string_view step)> onStep = [](std::string_view) {};
};

/// Downloads the model and the voice detection into the store, or copies the user's file, and prints
/// progress. Returns the exit status (SetupExit). After any interruption the next run resumes:
/// FILE.part grows, is verified and becomes FILE, and manifest.json is written last. A second setup
/// waits for the first. SIGTERM, SIGINT and SIGHUP end it.
/// Thread: the main one, before others are started; it blocks.
int runSetup(const SetupOptions& options, Output& output);

}  // namespace voxtrel::quillback
