// A minimal program that prints a line for each press of a global shortcut that the desktop's portal tells.

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstdint>
#include <string_view>

namespace {

constexpr std::string_view kReady = "Ready.\n";
constexpr std::string_view kLine = "Recording...\n";
constexpr const char* kRule =
    "type='signal',sender='org.freedesktop.portal.Desktop',"
    "interface='org.freedesktop.portal.GlobalShortcuts',member='Activated'";

int onActivated(sd_bus_message* /*message*/, void* /*data*/, sd_bus_error* /*error*/) {
  return ::write(STDOUT_FILENO, kLine.data(), kLine.size()) < 0 ? -1 : 0;
}

}  // namespace

int main() {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0) return 1;
  if (sd_bus_add_match(bus, nullptr, kRule, onActivated, nullptr) < 0) return 1;
  if (::write(STDOUT_FILENO, kReady.data(), kReady.size()) < 0) return 1;
  int progress = 0;
  while ((progress = sd_bus_process(bus, nullptr)) >= 0) {
    if (progress == 0 && sd_bus_wait(bus, UINT64_MAX) < 0) return 1;
  }
  return 1;
}
