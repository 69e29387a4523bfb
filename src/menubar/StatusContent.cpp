#include "menubar/StatusContent.h"

#include <map>

namespace voxtrel {

const std::string& symbolFor(AppState state) {
  static const std::map<AppState, std::string> kSymbols = {
      {AppState::loading, "mic.badge.xmark"}, {AppState::idle, "mic"},
      {AppState::recording, "mic.fill"},      {AppState::processing, "waveform"},
      {AppState::stopped, "mic.slash"},
  };
  return kSymbols.at(state);
}

const std::string& labelFor(AppState state) {
  static const std::map<AppState, std::string> kLabels = {
      {AppState::loading, "Loading model..."},
      {AppState::idle, "Ready \u2014 hold Right Cmd"},
      {AppState::recording, "Recording..."},
      {AppState::processing, "Transcribing..."},
      {AppState::stopped, "Voxtrel stopped \u2014 click Restart"},
  };
  return kLabels.at(state);
}

std::string statusTitle(AppState state, const std::string& lastError) {
  if (state == AppState::stopped && !lastError.empty()) return "Error: " + lastError;
  return labelFor(state);
}

std::string lastTextTitle(const std::string& lastText) {
  return "Last: " + (lastText.empty() ? "\u2014" : lastText);
}

}  // namespace voxtrel
