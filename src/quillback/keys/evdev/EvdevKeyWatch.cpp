#include "quillback/keys/evdev/EvdevKeyWatch.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace voxtrel::quillback {
namespace {

constexpr std::string_view kDevicePrefix = "event";

PushToTalk::Codes codesOf(const Hotkey& hotkey) {
  return {.hotkey = hotkey.evdevCode,
          .escape = KEY_ESC,
          .leftShift = KEY_LEFTSHIFT,
          .rightShift = KEY_RIGHTSHIFT,
          .needsShift = hotkey.needsShift};
}

}  // namespace

EvdevKeyWatch::Opened EvdevKeyWatch::open(const Hotkey& hotkey, KeyWatch::Listener listener,
                                          Loop& loop, OpenKeyboard openKeyboard,
                                          const std::string& folder) {
  // The constructor is private.
  std::unique_ptr<EvdevKeyWatch> watch(
      new EvdevKeyWatch(hotkey, std::move(listener), loop, std::move(openKeyboard), folder));
  if (!watch->folderWatch_.isOpen()) return {nullptr, "there is no folder " + folder};
  watch->lookAtFolder();
  if (watch->devices_.empty() && watch->someRefused_) {
    return {nullptr, "the keyboards in " + folder + " may be read only by members of their group"};
  }
  return {std::move(watch), ""};
}

EvdevKeyWatch::EvdevKeyWatch(const Hotkey& hotkey, KeyWatch::Listener listener, Loop& loop,
                             OpenKeyboard openKeyboard, std::string folder)
    : hotkey_(hotkey),
      key_(codesOf(hotkey), std::move(listener)),
      loop_(loop),
      openKeyboard_(std::move(openKeyboard)),
      folder_(std::move(folder)),
      folderWatch_(folder_) {
  if (!folderWatch_.isOpen()) return;
  folderLoopWatch_ = loop_.watch(folderWatch_.descriptor(), [this] { handleFolder(); });
}

void EvdevKeyWatch::lookAtFolder() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
    add(entry.path().filename());
  }
}

void EvdevKeyWatch::handleFolder() {
  folderWatch_.read({.onAppeared = [this](const std::string& name) { add(name); },
                     .onVanished = [this](const std::string& name) { remove(name); },
                     .onMissed = [this] { lookAtFolder(); }});
}

void EvdevKeyWatch::add(const std::string& name) {
  if (!name.starts_with(kDevicePrefix) || devices_.contains(name)) return;
  auto [keyboard, isRefused] = openKeyboard_(folder_ + "/" + name, hotkey_.evdevCode);
  someRefused_ = someRefused_ || isRefused;
  if (!keyboard) return;
  const int number = nextNumber_++;
  auto watch = loop_.watch(keyboard->descriptor(), [this, number] { handleKeys(number); });
  devices_.emplace(name, Device{number, std::move(keyboard), std::move(watch)});
}

void EvdevKeyWatch::remove(const std::string& name) {
  const auto found = devices_.find(name);
  if (found == devices_.end()) return;
  // The watch goes before the descriptor that it watches.
  found->second.watch.reset();
  const int number = found->second.number;
  devices_.erase(found);
  key_.gone(number);
}

void EvdevKeyWatch::handleKeys(int number) {
  const auto found = std::find_if(devices_.begin(), devices_.end(), [number](const auto& device) {
    return device.second.number == number;
  });
  if (found == devices_.end()) return;
  const bool isThere = found->second.keyboard->read([this, number](int code, bool isDown) {
    isDown ? key_.down(number, code) : key_.up(number, code);
  });
  if (!isThere) remove(std::string(found->first));
}

}  // namespace voxtrel::quillback
