#include "app/TranscribeCommand.h"

#include <unistd.h>

#include "app/Home.h"
#include "posix/LineOutput.h"
#include "settings/EngineSettings.h"
#include "speech/ChosenEngine.h"
#include "speech/Transcribe.h"

namespace quillback {

int printTranscript(const std::string& file) {
  LineOutput text(STDOUT_FILENO);
  LineOutput notes(STDERR_FILENO);
  const SettingsReading reading = readSettings(settingsPath(homeFolder()));
  for (const std::string& error : reading.errors) notes.print(error);
  const EngineSettings& settings = reading.settings;
  const auto engine =
      makeSpeechEngine({settings.model, settings.language, settings.translate}, homeFolder());
  const TranscribeExit exit = transcribeFile(file, *engine, text, notes);
  if (!text.hasLostLines()) return static_cast<int>(exit);
  notes.print("The words could not be written to standard output.");
  return static_cast<int>(TranscribeExit::unwritten);
}

}  // namespace quillback
