#include "quillback/app/TranscribeCommand.h"

#include <unistd.h>

#include "common/base/HomeDirectory.h"
#include "common/settings/ConfigManager.h"
#include "quillback/app/ChosenEngine.h"
#include "quillback/app/Transcribe.h"
#include "quillback/loop/LineOutput.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

int printTranscript(const std::string& file) {
  LineOutput text(STDOUT_FILENO);
  LineOutput notes(STDERR_FILENO);
  const SettingsReading reading = readEngineSettings(ConfigManager(homeDirectory()).configPath());
  for (const std::string& error : reading.errors) notes.print(error);
  const EngineSettings& settings = reading.settings;
  const auto engine =
      makeSpeechEngine({settings.model, settings.language, settings.translate}, homeDirectory());
  const TranscribeExit exit = transcribeFile(file, *engine, text, notes);
  if (!text.hasLostLines()) return static_cast<int>(exit);
  notes.print("The words could not be written to standard output.");
  return static_cast<int>(TranscribeExit::unwritten);
}

}  // namespace voxtrel::quillback
