#include "engine/EngineLocation.h"

#include "platform/ApplicationBundle.h"

namespace voxtrel {

std::string binaryPath(const ApplicationBundle& bundle) {
  return bundle.auxiliaryExecutable("quillback").value_or("/usr/local/bin/quillback");
}

}  // namespace voxtrel
