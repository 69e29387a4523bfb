#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quillback/model/ModelFolder.h"
#include "quillback/model/OwnWeights.h"
#include "quillback/model/Setup.h"

namespace voxtrel::quillback {

/// How the last line of a failed setup begins.
inline constexpr std::string_view kSetupFailed = "Setup failed: ";

/// The model of one setup.
struct SetupJob {
  ModelPin pin;
  /// The user's own weights. `pin` has their size and hash if they are in the store already.
  bool isCustom = false;
};

/// One setup of one model, up to the model's manifest.
/// Thread: the main one.  Owns: the lock on the model's folder.  Borrows: options, stop, output.
/// Fails by: a SetupFailure; what has arrived is kept.
class SetupRun {
 public:
  SetupRun(const SetupOptions& options, SetupJob job, const StopSignals& stop, Output& output);

  /// Downloads what is missing.
  SetupResult download();
  /// Copies the weights of `options.file`. The voice detection is taken from beside that file, else
  /// downloaded; if that fails, the weights are set up without it.
  SetupResult copyFile();

 private:
  /// What is in the store.
  enum class State { ready, withoutVoiceDetection, absent, embedded, damaged };

  State findState() const;
  bool isReady(State state) const;
  SetupResult makeEmbedded();
  SetupResult makeReady(State state);
  SetupResult needWeights();
  SetupResult needVoiceDetection(bool isQuiet);
  SetupResult fetch(const FilePin& pin, bool isQuiet, const std::string& stepPrefix);

  SetupResult judge(const OwnWeights& own);
  SetupResult install(const OwnWeights& own);
  bool copyVoiceDetection();
  SetupResult tryVoiceDetection();

  tl::expected<bool, SetupFailure> isThere(const FilePin& pin) const;
  SetupResult finish(bool hasVoiceDetection);
  SetupResult writeManifest(std::string_view recogniser, std::vector<Manifest::File> files);

  const SetupOptions& options_;
  SetupJob job_;
  const StopSignals& stop_;
  Output& output_;
  ModelFolder folder_;
  int maxTries_;  ///< of a download
};

}  // namespace voxtrel::quillback
