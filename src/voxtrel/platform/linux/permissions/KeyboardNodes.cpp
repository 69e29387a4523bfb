#include "voxtrel/platform/linux/permissions/KeyboardNodes.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "common/posix/FileDescriptor.h"

namespace voxtrel {
namespace {

constexpr auto kLetters = std::to_array<unsigned>(
    {KEY_A, KEY_B, KEY_C, KEY_D, KEY_E, KEY_F, KEY_G, KEY_H, KEY_I, KEY_J, KEY_K, KEY_L, KEY_M,
     KEY_N, KEY_O, KEY_P, KEY_Q, KEY_R, KEY_S, KEY_T, KEY_U, KEY_V, KEY_W, KEY_X, KEY_Y, KEY_Z});

}  // namespace

bool hasAllLetters(const KeyBits& keys) {
  return std::all_of(kLetters.begin(), kLetters.end(), [&](unsigned key) {
    return (static_cast<unsigned>(keys.at(key / 8)) >> (key % 8) & 1U) != 0;
  });
}

bool isKeyboard(int descriptor) {
  KeyBits keys{};
  return ::ioctl(descriptor, EVIOCGBIT(EV_KEY, sizeof keys), keys.data()) >= 0 &&
         hasAllLetters(keys);
}

bool canReadKeyboard(const std::string& folder,
                     const std::function<bool(int descriptor)>& accepts) {
  std::error_code error;
  std::filesystem::directory_iterator node(folder, error);
  for (; !error && node != std::filesystem::directory_iterator(); node.increment(error)) {
    if (!node->path().filename().string().starts_with("event")) continue;
    const FileDescriptor file(
        ::open(node->path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (file.isOpen() && accepts(file.get())) return true;
  }
  return false;
}

}  // namespace voxtrel
