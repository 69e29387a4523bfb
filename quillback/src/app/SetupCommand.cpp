#include "app/SetupCommand.h"

#include <unistd.h>

#include <cstdlib>

#include "app/CommandLine.h"
#include "app/Home.h"
#include "model/Setup.h"
#include "posix/LineOutput.h"
#include "recognition/WhisperSupport.h"

namespace quillback {

int setUpModel(const std::string& model) {
  LineOutput output(STDOUT_FILENO);
  SetupOptions options;
  options.home = homeFolder();
  options.model = model;
  if (const char* url = std::getenv("QUILLBACK_MODEL_URL")) options.baseUrl = url;
  options.hasWhisper = isWhisperBuiltIn();
  options.version = engineVersion();
  return runSetup(options, output);
}

}  // namespace quillback
