#pragma once

#include <string>
#include <string_view>

#include "voxtrel/supervisor/AppState.h"

namespace voxtrel {

/// What the status item and the two information rows of its menu show.

/// Name of the icon for `state`, such as "mic.fill".
std::string_view symbolFor(AppState state);

/// The status row's text for `state` alone. The idle text names the default key whatever key is
/// configured.
std::string_view labelFor(AppState state);

/// The status row: the label, or the error that the engine stopped with.
std::string statusTitle(AppState state, const std::string& lastError);

/// The row of the last transcription, shown in full.
std::string lastTextTitle(const std::string& lastText);

}  // namespace voxtrel
