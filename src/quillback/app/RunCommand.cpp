#include "quillback/app/RunCommand.h"

#include <unistd.h>

#include <csignal>

#include "quillback/app/Engine.h"
#include "quillback/app/Home.h"
#include "quillback/loop/EndSignals.h"
#include "quillback/loop/EndWatch.h"
#include "quillback/loop/LineOutput.h"

namespace voxtrel::quillback {

int runEngine() {
  const EndSignals signals;
  std::signal(SIGPIPE, SIG_IGN);
  LineOutput output(STDOUT_FILENO);
  EpollLoop loop;
  // Outlives the engine: where its end takes too long, this ends the process.
  const EndWatch endWatch(signals, [&loop] { loop.stop(); });
  const SettingsReading reading = readSettings(settingsPath(homeFolder()));
  for (const std::string& error : reading.errors) output.print(error);
  const Engine engine(loop, output, reading.settings);
  loop.run();
  return engine.exitStatus();
}

}  // namespace voxtrel::quillback
