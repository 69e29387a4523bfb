#include "quillback/model/Advice.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace voxtrel::quillback {

namespace {

/// A longer wait after the key's release breaks the flow of a dictation.
constexpr double kBearableSeconds = 1.0;
/// As long as the speech itself; a longer wait is no dictation.
constexpr double kUnbearableSeconds = 5.0;

constexpr std::array<std::string_view, 25> kEuropean = {
    "bg", "cs", "da", "de", "el", "en", "es", "et", "fi", "fr", "hr", "hu", "it",
    "lt", "lv", "mt", "nl", "pl", "pt", "ro", "ru", "sk", "sl", "sv", "uk"};

bool isEuropean(std::string_view language) {
  return std::ranges::find(kEuropean, language) != kEuropean.end();
}

}  // namespace

bool suits(const ModelPin& pin, const Spoken& spoken) {
  if (pin.languages == Languages::all) return true;
  if (spoken.translate) return false;
  if (pin.languages == Languages::english) return spoken.language == "en";
  const bool isAutomatic = spoken.language == "auto";
  return isEuropean(isAutomatic ? spoken.locale.substr(0, spoken.locale.find_first_of("_.@"))
                                : spoken.language);
}

double expectedSeconds(const ModelPin& pin, double timeFactor) {
  return pin.seconds * timeFactor;
}

const ModelPin* advise(const std::vector<ModelPin>& pins, double timeFactor, const Spoken& spoken) {
  const ModelPin* best = nullptr;
  const ModelPin* fastest = nullptr;
  for (const ModelPin& pin : pins) {
    if (!suits(pin, spoken)) continue;
    if (expectedSeconds(pin, timeFactor) <= kBearableSeconds) best = &pin;
    if (fastest == nullptr || pin.seconds <= fastest->seconds) fastest = &pin;
  }
  return best != nullptr ? best : fastest;
}

std::string adviceAgainst(const std::string& model, const std::vector<ModelPin>& pins,
                          double timeFactor, const Spoken& spoken) {
  const ModelPin* const slow = pinNamed(pins, model);
  const ModelPin* const better = advise(pins, timeFactor, spoken);
  if (slow == nullptr || better == nullptr || slow == better) return {};
  const double seconds = expectedSeconds(*slow, timeFactor);
  if (seconds <= kUnbearableSeconds) return {};
  const std::string& name = better->model;
  return model + " takes about " + secondsText(seconds) + " for 5 s of speech on this machine, " +
         name + " about " + secondsText(expectedSeconds(*better, timeFactor)) +
         ". To change over, run: quillback setup --model " + name + " && quillback use " + name;
}

std::string secondsText(double seconds) {
  constexpr double kTenSeconds = 10.0;
  if (seconds >= kTenSeconds) return std::to_string(std::lround(seconds)) + " s";
  const auto tenths = std::max(1L, std::lround(seconds * 10));
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

}  // namespace voxtrel::quillback
