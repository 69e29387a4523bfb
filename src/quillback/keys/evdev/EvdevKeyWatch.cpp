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

tl::expected<std::unique_ptr<EvdevKeyWatch>, std::string> EvdevKeyWatch::open(
    const Hotkey& hotkey, KeyWatch::Listener listener, Loop& loop, OpenKeyboard openKeyboard,
    std::function<void()> onFirst, const std::string& folder) {
  std::unique_ptr<EvdevKeyWatch> watch(
      new EvdevKeyWatch(hotkey, std::move(listener), loop, std::move(openKeyboard), folder));
  if (!watch->folderWatch_.isOpen()) return tl::unexpected("there is no folder " + folder);
  watch->addAll();
  watch->onFirst_ = std::move(onFirst);
  return watch;
}

std::string EvdevKeyWatch::whyNone() const {
  if (wasRefused_)
    return "the keyboards in " + folder_ + " may be read only by members of their group";
  return "there is no keyboard in " + folder_;
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

void EvdevKeyWatch::addAll() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
    add(entry.path().filename());
  }
}

void EvdevKeyWatch::handleFolder() {
  folderWatch_.read({.onAppeared = [this](const std::string& name) { add(name); },
                     .onDisappeared = [this](const std::string& name) { remove(name); },
                     .onMissed = [this] { addAll(); }});
}

void EvdevKeyWatch::add(const std::string& name) {
  if (!name.starts_with(kDevicePrefix) || devices_.contains(name)) return;
  auto keyboard = openKeyboard_(folder_ + "/" + name, hotkey_.evdevCode);
  if (!keyboard) {
    wasRefused_ = wasRefused_ || keyboard.error() == NoKeyboard::noPermission;
    return;
  }
  const int id = nextId_++;
  auto watch = loop_.watch((*keyboard)->descriptor(), [this, id] { handleKeys(id); });
  devices_.emplace(name, Device{id, std::move(*keyboard), std::move(watch)});
  if (devices_.size() == 1 && onFirst_) onFirst_();
}

void EvdevKeyWatch::remove(const std::string& name) {
  const auto found = devices_.find(name);
  if (found == devices_.end()) return;
  // The watch must end before its descriptor is closed.
  found->second.watch.reset();
  const int id = found->second.id;
  devices_.erase(found);
  key_.gone(id);
}

void EvdevKeyWatch::handleKeys(int id) {
  const auto found = std::find_if(devices_.begin(), devices_.end(),
                                  [id](const auto& device) { return device.second.id == id; });
  if (found == devices_.end()) return;
  const bool isThere = found->second.keyboard->read(
      [this, id](int code, bool isDown) { isDown ? key_.down(id, code) : key_.up(id, code); });
  if (!isThere) remove(std::string(found->first));
}

}  // namespace voxtrel::quillback
