#pragma once

#include <deque>

#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// What we pressed and let go ourselves while typing, so that whoever watches the keys does not take
/// it for the user's. Counted event by event, because a key pressed by another program at the same
/// time comes from the same keyboard as ours.
/// Thread: the loop's.  Borrows: Loop (must outlive this).
class OwnKeys {
 public:
  explicit OwnKeys(const Loop& loop) : loop_(loop) {}

  /// The server was asked for this event.
  void sent(int code, bool isDown);
  /// True, once for each event sent, if this is one of them.
  [[nodiscard]] bool take(int code, bool isDown);

 private:
  struct Event {
    int code;
    bool isDown;
    Loop::TimePoint at;
  };

  /// An event that the server swallowed must not hide one of the user's for ever.
  void forgetOld();

  const Loop& loop_;
  std::deque<Event> events_;
};

}  // namespace voxtrel::quillback
