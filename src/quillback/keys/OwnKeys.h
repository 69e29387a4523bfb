#pragma once

#include <deque>

#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Key events that we sent while typing, so that the key watch does not take them for the user's. They
/// are counted one by one, because events that other programs send come from the same virtual keyboard.
/// Thread: the loop's.  Borrows: Loop (must outlive this).
class OwnKeys {
 public:
  explicit OwnKeys(const Loop& loop) : loop_(loop) {}

  /// Notes an event that the server was asked for.
  void sent(int code, bool isDown);
  /// True, once per event sent, if this event is ours.
  [[nodiscard]] bool claim(int code, bool isDown);

 private:
  struct Event {
    int code;
    bool isDown;
    Loop::TimePoint at;
  };

  /// An event that never comes back must not hide a later one of the user's.
  void forgetOld();

  const Loop& loop_;
  std::deque<Event> events_;
};

}  // namespace voxtrel::quillback
