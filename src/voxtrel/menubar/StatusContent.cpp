#include "voxtrel/menubar/StatusContent.h"

#include <algorithm>
#include <array>

namespace voxtrel {
namespace {

struct Appearance {
  AppState state;
  std::string_view symbol;
  std::string_view label;
};

constexpr std::array<Appearance, 5> kAppearances = {{
    {AppState::loading, "mic.badge.xmark", "Loading model..."},
    {AppState::idle, "mic", "Ready \u2014 hold Right Cmd"},
    {AppState::recording, "mic.fill", "Recording..."},
    {AppState::processing, "waveform", "Transcribing..."},
    {AppState::stopped, "mic.slash", "Voxtrel stopped \u2014 click Restart"},
}};

const Appearance& appearanceOf(AppState state) {
  return *std::find_if(kAppearances.begin(), kAppearances.end(),
                       [state](const Appearance& row) { return row.state == state; });
}

}  // namespace

std::string_view symbolFor(AppState state) {
  return appearanceOf(state).symbol;
}

std::string_view labelFor(AppState state) {
  return appearanceOf(state).label;
}

std::string statusTitle(AppState state, const std::string& lastError) {
  if (state == AppState::stopped && !lastError.empty()) return "Error: " + lastError;
  return std::string(labelFor(state));
}

std::string lastTextTitle(const std::string& lastText) {
  return "Last: " + (lastText.empty() ? "\u2014" : lastText);
}

}  // namespace voxtrel
