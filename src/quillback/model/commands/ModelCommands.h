#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "quillback/model/Advice.h"
#include "quillback/model/ChosenModel.h"
#include "quillback/model/ModelPin.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// What the commands about models need to know.
struct ModelContext {
  std::string home;         ///< the user's; settings and store are below it
  ModelNames names;         ///< as the settings have them
  Spoken spoken;            ///< what the advice depends on
  bool hasWhisper = false;  ///< whether this build can use weights
  std::string version;      ///< of the program

  std::vector<ModelPin> pins = pinnedModels();
  /// How many times as long as on the reference machine a fixed computation takes here; nothing if
  /// it cannot be measured. Null: not measured.
  std::function<std::optional<double>()> measureSpeed = {};
  /// What computes, as one line for `quillback models`; empty: not shown.
  std::string runsOn = {};
};

/// `quillback use NAME`: writes the choice into the settings; says what to run if the weights are not
/// here. Returns the exit status (SetupExit): `usage` for an unknown name, `unwritable` if the
/// settings cannot be changed.
int useModel(const ModelContext& context, const std::string& name, Output& output);

/// `quillback remove NAME`: removes what setup has made for the model, and says how many bytes. Returns
/// the exit status (SetupExit): `usage` for an unknown name or the model in use, `locked` while setup
/// is running, `unwritable` if a file cannot be removed.
int removeModel(const ModelContext& context, const std::string& name, Output& output);

/// The model that suits this machine, for `quillback setup --model advised`; says which. Where the speed
/// cannot be measured, that of the reference machine is assumed.
std::string adviseModel(const ModelContext& context, Output& output);

}  // namespace voxtrel::quillback
