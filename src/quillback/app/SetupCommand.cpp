#include "quillback/app/SetupCommand.h"

#include <unistd.h>

#include <cstdlib>

#include "common/base/HomeDirectory.h"
#include "quillback/app/CommandLine.h"
#include "quillback/loop/LineOutput.h"
#include "quillback/model/Setup.h"
#include "quillback/recognition/WhisperSupport.h"

namespace voxtrel::quillback {

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

}  // namespace voxtrel::quillback
