#pragma once

#include <map>

#include "common/settings/HotkeyTable.h"
#include "quillback/keys/PushToTalk.h"
#include "quillback/keys/evdev/FolderWatch.h"
#include "quillback/keys/evdev/Keyboard.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The push-to-talk key read from the kernel, from every keyboard that is there or comes later. A
/// key held on a keyboard that is unplugged counts as let go; a release follows every press, a
/// cancelled one too.
/// Thread: the loop's.  Owns: the keyboards' descriptors.  Borrows: the loop (must outlive this).
class EvdevKeyWatch final : public KeyWatch {
 public:
  struct Opened {
    std::unique_ptr<EvdevKeyWatch> watch;  ///< nothing where no keyboard may be read
    std::string why;                       ///< then the reason, for people
  };

  static constexpr std::string_view kFolder = "/dev/input";

  /// No keyboard at all is no failure: one may be plugged in later.
  [[nodiscard]] static Opened open(const Hotkey& hotkey, KeyWatch::Listener listener, Loop& loop,
                                   OpenKeyboard openKeyboard,
                                   const std::string& folder = std::string(kFolder));

  std::size_t keyboardCount() const { return devices_.size(); }

 private:
  struct Device {
    int number;  // what PushToTalk knows it by; never used again
    std::unique_ptr<Keyboard> keyboard;
    std::unique_ptr<Loop::Watch> watch;
  };

  EvdevKeyWatch(const Hotkey& hotkey, KeyWatch::Listener listener, Loop& loop,
                OpenKeyboard openKeyboard, std::string folder);

  void lookAtFolder();
  void handleFolder();
  void add(const std::string& name);
  void remove(const std::string& name);
  void handleKeys(int number);

  Hotkey hotkey_;
  PushToTalk key_;
  Loop& loop_;
  OpenKeyboard openKeyboard_;
  std::string folder_;
  FolderWatch folderWatch_;
  std::map<std::string, Device> devices_;  // by file name
  int nextNumber_ = 0;
  bool someRefused_ = false;
  std::unique_ptr<Loop::Watch> folderLoopWatch_;
};

}  // namespace voxtrel::quillback
