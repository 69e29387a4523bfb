#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "common/settings/HotkeyTable.h"
#include "quillback/keys/PushToTalk.h"
#include "quillback/keys/evdev/Keyboard.h"
#include "quillback/loop/FolderWatch.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The push-to-talk key read from the kernel, from every keyboard that is there, is plugged in later or
/// may be read later. Unplugging a keyboard releases its key. Every press is followed by a release, also
/// after a cancel.
/// Thread: the loop's.  Owns: the keyboards.
/// Fails by: an error from `open`; `whyNone`.
class EvdevKeyWatch final : public KeyWatch {
 public:
  static constexpr std::string_view kFolder = "/dev/input";

  /// Fails without the folder. `onFirst`: called whenever a keyboard comes while there is none.
  [[nodiscard]] static tl::expected<std::unique_ptr<EvdevKeyWatch>, std::string> open(
      const Hotkey& hotkey, KeyWatch::Listener listener, Loop& loop, OpenKeyboard openKeyboard,
      std::function<void()> onFirst = nullptr, const std::string& folder = std::string(kFolder));

  std::size_t keyboardCount() const { return devices_.size(); }
  /// Why no keyboard is read, for people.
  std::string whyNone() const;

 private:
  struct Device {
    int id;  // PushToTalk's; never reused
    std::unique_ptr<Keyboard> keyboard;
    std::unique_ptr<Loop::Watch> watch;
  };

  EvdevKeyWatch(const Hotkey& hotkey, KeyWatch::Listener listener, Loop& loop,
                OpenKeyboard openKeyboard, std::string folder);

  void addAll();
  void handleFolder();
  void add(const std::string& name);
  void remove(const std::string& name);
  void handleKeys(int id);

  Hotkey hotkey_;
  PushToTalk key_;
  Loop& loop_;
  OpenKeyboard openKeyboard_;
  std::function<void()> onFirst_;
  std::string folder_;
  FolderWatch folderWatch_;
  std::map<std::string, Device> devices_;  // by file name
  int nextId_ = 0;
  bool wasRefused_ = false;
  std::unique_ptr<Loop::Watch> folderLoopWatch_;
};

}  // namespace voxtrel::quillback
