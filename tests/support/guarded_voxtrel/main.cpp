// The whole application on the real desktop. The environment chooses a place, so that a test can refuse
// and grant what the desktop would:
//
//   GUARDED_SANDBOX_MARKER  a file; if it exists, the application is in a sandbox and asks the
//                           portal on the session bus for the microphone
//
// Without the variable, that place is the product's. Arguments are not read.

#include <cstdlib>
#include <string>

#include "voxtrel/app/CommandLine.h"
#include "voxtrel/app/QuillbackApp.h"
#include "voxtrel/platform/linux/LinuxDesktop.h"

int main(int argc, char** argv) {
  voxtrel::LinuxPlaces places;
  if (const char* marker = std::getenv("GUARDED_SANDBOX_MARKER")) places.sandboxMarker = marker;
  constexpr auto kOpen = voxtrel::StartRequest::open;
  const auto desktop =
      voxtrel::connectToLinux(argc, argv, voxtrel::applicationVersion(), kOpen, places);
  if (!desktop) return desktop.error();
  return voxtrel::QuillbackApp(**desktop).run(kOpen);
}
