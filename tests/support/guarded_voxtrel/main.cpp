// The whole application on the real desktop, with two of its places chosen by the environment, so
// that a test can refuse and grant what the desktop would:
//
//   GUARDED_SANDBOX_MARKER  a file; if it exists, the application is in a sandbox and asks the
//                           portal on the session bus for the microphone
//   GUARDED_INPUT_FOLDER    a folder; every file event* in it that can be opened is a keyboard.
//                           Only a Wayland session looks there: set XDG_SESSION_TYPE=wayland
//
// A variable that is not set leaves that place as it is in the product. Arguments are not read.

#include <cstdlib>
#include <optional>
#include <string>

#include "support/guarded_voxtrel/GuardedDesktop.h"
#include "voxtrel/app/CommandLine.h"
#include "voxtrel/app/QuillbackApp.h"

namespace {

std::optional<std::string> variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace

int main(int argc, char** argv) {
  auto connection = voxtrel::connectToDesktop(argc, argv, voxtrel::applicationVersion());
  if (!connection.desktop) return connection.exitStatus;
  voxtrel::testing::GuardedDesktop desktop(std::move(connection.desktop),
                                           {.sandboxMarker = variable("GUARDED_SANDBOX_MARKER"),
                                            .inputFolder = variable("GUARDED_INPUT_FOLDER")});
  return voxtrel::QuillbackApp(desktop).run();
}
