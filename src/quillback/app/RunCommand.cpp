#include "quillback/app/RunCommand.h"

#include <unistd.h>

#include <csignal>

#include "common/base/HomeDirectory.h"
#include "common/posix/StopSignals.h"
#include "common/settings/ConfigManager.h"
#include "quillback/app/Engine.h"
#include "quillback/loop/EndWatch.h"
#include "quillback/loop/LineOutput.h"

namespace voxtrel::quillback {

int runEngine() {
  // Static: once the engine is ending, a second signal must not kill it half-way.
  static const StopSignals signals(StopSignals::InheritedIgnores::keep, {SIGPIPE});
  LineOutput output(STDOUT_FILENO);
  EpollLoop loop;
  // Outlives the engine: where its end takes too long, this ends the process.
  const EndWatch endWatch(signals, [&loop] { loop.stop(); });
  const SettingsReading reading = readEngineSettings(ConfigManager(homeDirectory()).configPath());
  for (const std::string& error : reading.errors) output.print(error);
  const Engine engine(loop, output, reading.settings);
  loop.run();
  return engine.exitStatus();
}

}  // namespace voxtrel::quillback
