#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// What a clipboard has: each type, such as "text/plain", with its bytes.
using ClipboardContent = std::vector<std::pair<std::string, std::string>>;

/// A clipboard that holds a text while a window pastes it.
/// Thread: the loop's.
class PasteClipboard {
 public:
  virtual ~PasteClipboard() = default;

  using OnContent = std::function<void(ClipboardContent content)>;
  using OnOffered = std::function<void(bool isThere)>;
  using OnRead = std::function<void(const std::string& type, Loop::TimePoint begun)>;

  /// Reads what is there. Calls `onContent`, maybe before this returns. A call drops the one before.
  virtual void read(OnContent onContent) = 0;
  /// Ends the reading; returns what has come by then.
  virtual ClipboardContent stopReading() = 0;

  /// Puts content there; nothing empties the clipboard. `onOffered` is called once; `onRead` each time that
  /// another program has got all of one type, as long as the content is there, with the time when it asked.
  virtual void offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) = 0;
  /// Whether what was offered last is still there.
  virtual bool holdsOffer() const = 0;
  /// Whether it reads what is there and tells who reads what was offered. If not, `read` gives nothing and
  /// what was there is lost.
  virtual bool seesReads() const = 0;
  /// Whether the desktop itself reads each new text, before any window does.
  virtual bool isWatched() const = 0;
};

}  // namespace voxtrel::quillback
