#include <ApplicationServices/ApplicationServices.h>

extern "C" Boolean AXIsProcessTrusted() {
  return AXIsProcessTrustedWithOptions(nullptr);
}
