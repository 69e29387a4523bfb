#include "quillback/app/Commands.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <memory>

#include "common/base/HomeDirectory.h"
#include "common/posix/StopSignals.h"
#include "common/settings/ConfigManager.h"
#include "quillback/app/ChosenBackend.h"
#include "quillback/app/CommandLine.h"
#include "quillback/app/Engine.h"
#include "quillback/app/Transcribe.h"
#include "quillback/audio/TakeFolder.h"
#include "quillback/loop/EndWatch.h"
#include "quillback/loop/LineOutput.h"
#include "quillback/model/Setup.h"
#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/process/RecogniserServer.h"
#include "quillback/recognition/sphinx/SphinxBackend.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {
namespace {

/// Reads the user's settings and prints what is wrong with them.
EngineSettings loadSettings(Output& output) {
  const SettingsReading reading = readEngineSettings(ConfigManager(homeDirectory()).configPath());
  for (const std::string& error : reading.errors) output.print(error);
  return reading.settings;
}

TranscribeExit unwritten(Output& notes) {
  notes.print("The words could not be written to standard output.");
  return TranscribeExit::unwritten;
}

/// Null for an unknown name.
std::unique_ptr<RecogniserBackend> makeServedBackend(const std::vector<std::string>& arguments) {
  if (arguments != std::vector<std::string>{"embedded"}) return nullptr;
  return std::make_unique<SphinxBackend>(sphinxModelFolder());
}

}  // namespace

int runEngine() {
  // Static: a second signal must not kill the engine while it is ending.
  static const StopSignals kSignals(StopSignals::InheritedIgnores::keep, {SIGPIPE});
  LineOutput output(STDOUT_FILENO);
  EpollLoop loop;
  // Outlives the engine: if taking that down takes too long, the watch ends the process.
  const EndWatch endWatch(kSignals, [&loop] { loop.stop(); });
  const Engine engine(loop, output, loadSettings(output));
  loop.run();
  return engine.exitStatus();
}

int setUpModel(const std::string& model) {
  LineOutput output(STDOUT_FILENO);
  SetupOptions options;
  options.home = homeDirectory();
  options.model = model;
  if (const char* url = std::getenv("QUILLBACK_MODEL_URL")) options.baseUrl = url;
  options.hasWhisper = isWhisperBuiltIn();
  options.version = engineVersion();
  return runSetup(options, output);
}

int printTranscript(const std::string& file) {
  LineOutput text(STDOUT_FILENO);
  LineOutput notes(STDERR_FILENO);
  const auto backend = makeBackend(loadSettings(notes), homeDirectory());
  const TranscribeExit exit = transcribeFile(file, *backend, text, notes);
  return static_cast<int>(text.hasLostLines() ? unwritten(notes) : exit);
}

int retryKeptTakes() {
  LineOutput text(STDOUT_FILENO);
  LineOutput notes(STDERR_FILENO);
  const std::string folder = takeFolderPath();
  if (folder.empty()) notes.print("Recordings are kept only where XDG_RUNTIME_DIR is set.");
  const auto takes = TakeFolder(folder).takes();
  const auto backend = makeBackend(loadSettings(notes), homeDirectory());
  const auto deliver = [&text](const std::string& words) {
    text.print(words);
    return !text.hasLostLines();
  };
  const TranscribeExit exit = retryTakes(takes, *backend, deliver, notes);
  return static_cast<int>(exit == TranscribeExit::unwritten ? unwritten(notes) : exit);
}

int serveRecogniserCommand(const std::vector<std::string>& arguments) {
  const auto backend = makeServedBackend(arguments);
  return backend ? serveRecogniser(STDIN_FILENO, *backend) : 2;
}

}  // namespace voxtrel::quillback
