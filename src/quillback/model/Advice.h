#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quillback/model/ModelPin.h"

namespace voxtrel::quillback {

/// What the user dictates, as far as it limits the choice of a model.
struct Spoken {
  std::string language = "auto";  ///< the setting: a language code, or "auto"
  bool translate = false;         ///< the setting: to English
  std::string locale = {};        ///< such as "de_DE.UTF-8"; says what "auto" is likely to be
};

/// Whether the model is meant for this. "auto" needs a model for all languages, unless the locale's
/// language is one that the model knows among others.
bool suits(const ModelPin& pin, const Spoken& spoken);

/// Seconds that five seconds of speech take where everything takes `timeFactor` times as long as on
/// the reference machine.
double expectedSeconds(const ModelPin& pin, double timeFactor);

/// The most accurate of the suitable models that recognises five seconds of speech within one
/// second, else the fastest suitable one. Null only if none suits. `pins` go from the least to the
/// most accurate.
const ModelPin* advise(const std::vector<ModelPin>& pins, double timeFactor, const Spoken& spoken);

/// One line that advises against `model` where five seconds of speech take it more than five seconds:
/// which model would do, and the command for it. Empty where it is fast enough, unknown, or the advised
/// one.
std::string adviceAgainst(const std::string& model, const std::vector<ModelPin>& pins,
                          double timeFactor, const Spoken& spoken);

/// "0.6 s", and whole seconds from ten on; independent of the locale.
std::string secondsText(double seconds);

}  // namespace voxtrel::quillback
