#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/base/SessionKind.h"
#include "common/settings/HotkeyTable.h"
#include "quillback/keys/OwnKeys.h"
#include "quillback/ports/KeyWatch.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// A watch over the push-to-talk key, or why there is none.
struct KeySource {
  std::unique_ptr<KeyWatch> watch;
  std::string why;  ///< for people
};

/// Opens the best source that works here: X11's events, or the kernel's where there is no X server or
/// it does not see all keys. `onLost` is called where that ends later.
[[nodiscard]] KeySource openKeySource(SessionKind session, const Hotkey& hotkey,
                                      const KeyWatch::Listener& listener, OwnKeys& ownKeys,
                                      Loop& loop, const std::function<void()>& onLost);

/// The line that says what to do without a key source.
std::string noKeySourceLine(const Hotkey& hotkey, const std::string& why);

}  // namespace voxtrel::quillback
