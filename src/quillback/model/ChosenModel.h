#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "quillback/model/ModelFolder.h"

namespace voxtrel::quillback {

// The application's window always sets up one model and looks for that model's manifest. Where the
// settings choose another one, that manifest only names the chosen model, so that the window finds
// what it looks for and no unused weights are downloaded.

/// The model of the application's window.
inline constexpr std::string_view kWindowModel = "large-v3";

/// Which models the settings name.
struct ModelNames {
  std::string engine = {};                         ///< [engine] model; empty: none
  std::string window = std::string(kWindowModel);  ///< [model] whisper_model

  /// The model to use.
  const std::string& inUse() const { return engine.empty() ? window : engine; }
};

/// Brings the manifest of the window's model up to date: it names `chosen` if that is another model
/// and complete; else such a manifest is removed. Complete weights of the window's model and their
/// manifest stay as they are. `lock` is called with the window's folder before something is changed.
/// `writtenBy`: program and version.
/// Thread: any.
SetupResult noteChosen(const std::string& home, const std::string& chosen,
                       const std::string& writtenBy,
                       const std::function<SetupResult(ModelFolder& folder)>& lock);

}  // namespace voxtrel::quillback
