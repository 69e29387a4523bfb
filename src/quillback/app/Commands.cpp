#include "quillback/app/Commands.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "common/base/HomeDirectory.h"
#include "common/base/SessionKind.h"
#include "common/posix/Confinement.h"
#include "common/posix/StopSignals.h"
#include "common/settings/ConfigManager.h"
#include "quillback/app/Check.h"
#include "quillback/app/ChosenBackend.h"
#include "quillback/app/CommandLine.h"
#include "quillback/app/Engine.h"
#include "quillback/app/KeySource.h"
#include "quillback/app/MicrophoneSearch.h"
#include "quillback/app/SlowModelAdvice.h"
#include "quillback/app/Transcribe.h"
#include "quillback/audio/TakeFolder.h"
#include "quillback/insertion/portal/RemoteDesktop.h"
#include "quillback/keys/command/KeyCommands.h"
#include "quillback/loop/EndWatch.h"
#include "quillback/loop/LineOutput.h"
#include "quillback/model/ModelStore.h"
#include "quillback/model/Setup.h"
#include "quillback/model/commands/ModelCommands.h"
#include "quillback/model/commands/ModelTable.h"
#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/process/RecogniserServer.h"
#include "quillback/settings/EngineSettings.h"
#include "quillback/settings/StateFile.h"

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

/// The same in silence: what is wrong with them is printed when the engine runs.
EngineSettings settingsQuietly() {
  return readEngineSettings(ConfigManager(homeDirectory()).configPath()).settings;
}

/// What the settings say about models.
ModelContext modelContext() {
  const EngineSettings settings = settingsQuietly();
  ModelContext context;
  context.home = homeDirectory();
  context.names = {settings.engineModel, settings.model};
  context.spoken = {settings.language, settings.translate};
  // The last one that is set counts most.
  for (const char* const name : {"LANG", "LC_MESSAGES", "LC_ALL"}) {
    const char* const value = std::getenv(name);
    if (value != nullptr && *value != '\0') context.spoken.locale = value;
  }
  context.hasWhisper = isWhisperBuiltIn();
  context.version = engineVersion();
  context.measureSpeed = measureProcessor;
  return context;
}

/// The model's name for setup.
std::string nameForSetup(const ModelContext& context, const std::string& model, Output& output) {
  if (model.empty()) return context.names.inUse();
  if (model != kAdvised) return model;
  return context.hasWhisper ? adviseModel(context, output) : context.names.inUse();
}

/// The engine writes into its own folders and the run-time folder. Sound and graphics need devices; under
/// Wayland wl-copy puts the text into a temporary file.
void confineEngine(SessionKind session) {
  const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
  std::vector<std::string> folders{homeDirectory() + "/.local/share/quillback", makeStateFolder(),
                                   "/dev"};
  if (runtime != nullptr && runtime[0] == '/') folders.emplace_back(runtime);
  if (session == SessionKind::wayland) {
    const char* const temporary = std::getenv("TMPDIR");
    folders.emplace_back(temporary != nullptr ? temporary : "/tmp");
  }
  confineWriting(folders);
  protectMemory();
}

/// Turns speech into text until a signal ends it or its parent is gone.
int runEngine() {
  // Static: a second signal must not kill the engine while it is ending.
  static const StopSignals kSignals(StopSignals::InheritedIgnores::keep, {SIGPIPE});
  LineOutput output(STDOUT_FILENO);
  confineEngine(currentSessionKind(SessionKind::x11));
  EpollLoop loop;
  // Outlives the engine: if taking that down takes too long, the watch ends the process.
  const EndWatch endWatch(kSignals, [&loop] { loop.stop(); });
  const Engine engine(loop, output, loadSettings(output));
  loop.run();
  return engine.exitStatus();
}

/// Downloads and checks the model, or copies the user's file.
int setUpModel(const std::string& model, const std::string& file) {
  LineOutput output(STDOUT_FILENO);
  const ModelContext context = modelContext();
  SetupOptions options;
  options.home = context.home;
  options.model = nameForSetup(context, model, output);
  options.chosen = context.names.engine;
  options.file = file;
  if (const char* url = std::getenv("QUILLBACK_MODEL_URL")) options.baseUrl = url;
  options.hasWhisper = context.hasWhisper;
  options.version = context.version;
  options.tryWeights = tryWeights;
  const int status = runSetup(options, output);
  const bool isOther = options.model != kWindowModel && options.model != context.names.inUse();
  if (status == 0 && context.hasWhisper && isOther) {
    output.print("To use it, run \"quillback use " + options.model + "\".");
  }
  return status;
}

/// What runs the model of the settings; empty in a build without Whisper.
std::string describeRecogniser(const ModelContext& context) {
  std::string text = describeWhisper(settingsQuietly().threads);
  const auto stored = inspectStore(context.home, context.names.inUse());
  if (text.empty() || !stored) return text;
  return text + (stored->voiceDetectionFile.empty() ? ", without" : ", with") + " voice detection";
}

int printModels(bool isJson) {
  ModelContext context = modelContext();
  context.runsOn = describeRecogniser(context);
  LineOutput output(STDOUT_FILENO);
  return listModels(context, isJson, output);
}

int chooseModel(const std::string& model) {
  LineOutput output(STDOUT_FILENO);
  return useModel(modelContext(), model, output);
}

int removeStoredModel(const std::string& model) {
  LineOutput output(STDOUT_FILENO);
  return removeModel(modelContext(), model, output);
}

/// Prints the words to standard output, all else to standard error.
int printTranscript(const std::string& file) {
  LineOutput text(STDOUT_FILENO);
  LineOutput notes(STDERR_FILENO);
  const auto backend = makeBackend(loadSettings(notes), homeDirectory());
  const TranscribeExit exit = transcribeFile(file, *backend, text, notes);
  return static_cast<int>(text.hasLostLines() ? unwritten(notes) : exit);
}

/// Does the same for each recording whose words were not delivered, the oldest first.
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

/// Says whether the key can be seen, and what else would be used.
int checkDesktop() {
  // A sound server or an X server that goes away must not kill the check.
  const StopSignals signals(StopSignals::InheritedIgnores::keep, {SIGPIPE});
  LineOutput output(STDOUT_FILENO);
  return printCheck(settingsQuietly(), output);
}

/// Tells the running engine that the key is pressed or released.
int sendKey(const std::string& word) {
  noteKeyCommand();
  const auto reply = sendKeyCommand(keyCommandPath(), word);
  if (reply == "ok") return 0;
  std::fprintf(stderr, "quillback: %s\n", reply ? reply->c_str() : reply.error().c_str());
  return 1;
}

/// The recogniser's process: its end of a socket pair is standard input.
int serveRecogniserCommand(const std::vector<std::string>& arguments) {
  protectMemory();
  confineWriting({"/dev"});  // for graphics cards
  const auto backend = makeServedBackend(arguments, settingsQuietly(), homeDirectory());
  return backend ? serveRecogniser(STDIN_FILENO, *backend) : 2;
}

/// Returns the exit status.
int show(const std::string& text) {
  return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}

/// A running engine sees it with its next words.
int askAgain() {
  RemoteDesktop::forgetRefusal();
  return show("The desktop asks again with the next words, where it is needed.\n");
}

/// The advice of a process that the engine starts for it.
int adviseQuietly() {
  return writeSlowModelAdvice(modelContext());
}

}  // namespace

int runCommand(const CommandLine& line) {
  // Of the recogniser's process, which inherits it: while threads that compute wait for each other, they
  // sleep. Spinning is no faster here, and on a busy machine it takes several times as long.
  ::setenv("OMP_WAIT_POLICY", "passive", 0);
  using enum CommandLine::Command;
  switch (line.command) {
    case run:
      return runEngine();
    case setup:
      return setUpModel(line.argument, line.file);
    case models:
      return printModels(line.isJson);
    case use:
      return chooseModel(line.argument);
    case remove:
      return removeStoredModel(line.argument);
    case transcribe:
      return printTranscript(line.argument);
    case retry:
      return retryKeptTakes();
    case check:
      return checkDesktop();
    case key:
      return sendKey(line.argument);
    case ask:
      return askAgain();
    case recognise:
      return serveRecogniserCommand(line.rest);
    case advise:
      return adviseQuietly();
    case microphone:
      return searchMicrophone(line.rest);
    case help:
      return show(helpText());
    case version:
      break;
  }
  return show("quillback " + engineVersion() + "\n");
}

}  // namespace voxtrel::quillback
