#include "quillback/model/Advice.h"

#include <algorithm>
#include <array>

namespace voxtrel::quillback {

namespace {

/// A longer wait after the key's release breaks the flow of a dictation.
constexpr double kBearableSeconds = 1.0;

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

}  // namespace voxtrel::quillback
