#include "voxtrel/platform/linux/permissions/SandboxMicrophoneAccess.h"

#include <unistd.h>

#include <utility>

#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/linux/permissions/MicrophoneRequest.h"

namespace voxtrel {

SandboxMicrophoneAccess::SandboxMicrophoneAccess(MainLoop& mainLoop, Log& log, QDBusConnection bus,
                                                 std::string sandboxMarker)
    : mainLoop_(mainLoop),
      log_(log),
      bus_(std::move(bus)),
      sandboxMarker_(std::move(sandboxMarker)) {}

void SandboxMicrophoneAccess::request(std::function<void(bool granted)> answer) {
  if (::access(sandboxMarker_.c_str(), F_OK) == 0) {
    new MicrophoneRequest(bus_, log_, std::move(answer), &requests_);
  } else {
    mainLoop_.post([answer = std::move(answer)] { answer(true); });
  }
}

}  // namespace voxtrel
