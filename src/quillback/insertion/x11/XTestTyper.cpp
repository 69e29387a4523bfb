#include "quillback/insertion/x11/XTestTyper.h"

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <utility>

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

/// How long clients get to read a changed keymap. Keys that arrive earlier are read by the old one.
constexpr milliseconds kKeymapDelay{20};
/// How long a client without ping support gets before we remap the spare keys.
constexpr milliseconds kRemapDelay{300};
/// How long spare keys stay at least, for programs that watch other windows' keys.
constexpr milliseconds kRestoreDelay{1000};
/// Ping timeout; a slower client is treated as hung.
constexpr milliseconds kPingTimeout{5000};
/// Each stroke adds this to the delays without a ping.
constexpr milliseconds kStrokeTime{2};
constexpr milliseconds kPieceInterval{10};
/// A server that does not tell the focus is asked again after this time, and so often.
constexpr milliseconds kFocusRetry{100};
constexpr int kMaxFocusRetries = 20;

std::string_view whyNotTyped(const XConnection& server, ScreenLock& lock,
                             const std::optional<FocusedWindow>& now,
                             const std::optional<FocusedWindow>& wanted) {
  if (server.isBroken()) return "the X server is gone";
  if (!now) return "the X server does not reply";
  if (!now->exists()) return "no window has the focus";
  if (now != wanted) return "the focus moved to another window";
  return lock.isLocked() ? "the screen is locked" : "";
}

/// The error says which extension the server lacks.
tl::expected<void, std::string> checkExtensions(const XConnection& server) {
  const auto* test = xcb_get_extension_data(server.get(), &xcb_test_id);
  if (test == nullptr || test->present == 0)
    return tl::make_unexpected("the X server has no XTEST extension");
  const int hasXkb = xkb_x11_setup_xkb_extension(
      server.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
      XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr);
  if (hasXkb == 0) return tl::make_unexpected("the X server has no keyboard extension");
  return {};
}

}  // namespace

tl::expected<std::unique_ptr<XTestTyper>, std::string> XTestTyper::open(Loop& loop,
                                                                        OwnKeys& ownKeys,
                                                                        ScreenLock& lock,
                                                                        OnRefused onRefused) {
  auto server = XConnection::open();
  if (!server) return tl::make_unexpected("there is no X server");
  if (auto checked = checkExtensions(*server); !checked) return tl::unexpected(checked.error());
  std::unique_ptr<XTestTyper> typer(
      new XTestTyper(std::move(server), loop, ownKeys, lock, std::move(onRefused)));
  typer->watch_ =
      loop.watch(typer->server_->descriptor(), [self = typer.get()] { self->drainEvents(); });
  typer->keyboard_.giveBackLeftOvers();
  return typer;
}

XTestTyper::XTestTyper(std::unique_ptr<XConnection> server, Loop& loop, OwnKeys& ownKeys,
                       ScreenLock& lock, OnRefused onRefused)
    : server_(std::move(server)),
      loop_(loop),
      lock_(lock),
      onRefused_(std::move(onRefused)),
      activeWindowAtom_(server_->atom("_NET_ACTIVE_WINDOW")),
      ping_(*server_),
      keyboard_(*server_, ownKeys) {}

void XTestTyper::runAfter(milliseconds delay, Step step) {
  timer_ = loop_.after(delay, [this, step] { (this->*step)(); });
}

/// The server also sends keymap changes to every client; unread events would pile up.
void XTestTyper::drainEvents() {
  while (const auto event = server_->nextEvent()) {
    if (event->response_type == XCB_DESTROY_NOTIFY) {
      if (eventAs<xcb_destroy_notify_event_t>(*event).window == lastWindow_.focus) lastWindow_ = {};
    } else if (ping_.isPingReply(*event)) {
      if (afterPing_ != nullptr) runAfter(milliseconds(0), std::exchange(afterPing_, nullptr));
    }
  }
  if (server_->isBroken()) watch_.reset();
}

void XTestTyper::type(const std::string& text, OnEnd onEnd) {
  const bool wasIdle = isIdle();
  texts_.push_back({text, focusedWindow(*server_, activeWindowAtom_), std::move(onEnd)});
  if (wasIdle) typeNextText();
}

void XTestTyper::typeNextText() {
  timer_.reset();
  while (!texts_.empty()) {
    const Text next = std::exchange(texts_.front(), {});
    texts_.pop_front();
    const auto prepared = prepare(next);
    if (prepared) {
      onEnd_ = next.onEnd;
      return beginBatch();
    }
    lastWindow_ = {};
    onRefused_(next.text, prepared.error());
    next.onEnd();
  }
}

/// Watches for the window's end, because its id may be reused.
void XTestTyper::remember(const FocusedWindow& window) {
  const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
  const std::uint32_t destruction = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  if (window == lastWindow_) return;
  xcb_change_window_attributes(server_->get(), lastWindow_.focus, XCB_CW_EVENT_MASK, &none);
  xcb_change_window_attributes(server_->get(), window.focus, XCB_CW_EVENT_MASK, &destruction);
  lastWindow_ = window;
}

tl::expected<void, std::string> XTestTyper::prepare(const Text& next) {
  drainEvents();
  const auto window = focusedWindow(*server_, activeWindowAtom_);
  const std::string_view why =
      whyNotTyped(*server_, lock_, window, next.window ? next.window : window);
  if (!why.empty()) return tl::unexpected(std::string(why));
  keyboard_.giveBackLeftOvers();  // of a typer that ran when this one started
  keyboard_.releaseAll();         // a held key may switch the layout
  auto table = readKeyTable(*server_);
  if (!table) return tl::make_unexpected("the X server does not tell its keymap");
  table_ = std::move(*table);
  const std::string_view before = *window == lastWindow_ ? lastText_ : std::string_view();
  text_ = std::string(separatorBetween(before, next.text)) + next.text;
  typedCharacters_ = 0;
  auto batches = planTyping(typeable(text_), table_);
  if (batches.empty()) {
    return tl::make_unexpected("the keyboard has no spare key for its characters");
  }
  batches_ = {std::make_move_iterator(batches.begin()), std::make_move_iterator(batches.end())};
  remember(*window);
  lastText_ = next.text;
  return {};
}

bool XTestTyper::mayType(Step step) {
  drainEvents();  // the window may be gone
  const auto now = focusedWindow(*server_, activeWindowAtom_);
  const std::string_view why = whyNotTyped(*server_, lock_, now, lastWindow_);
  if (!now && !server_->isBroken() && ++missingReplies_ <= kMaxFocusRetries) {
    runAfter(kFocusRetry, step);
    return false;
  }
  missingReplies_ = 0;
  if (!why.empty()) refuseRest(std::string(why));
  return why.empty();
}

void XTestTyper::refuseRest(const std::string& why) {
  const std::string rest(typedCharacters_ == 0 ? lastText_ : afterTyped(text_, typedCharacters_));
  batches_.clear();
  endText(kStrokeTime * static_cast<int>(typedStrokes_));
  lastWindow_ = {};
  onRefused_(rest, why);
  std::exchange(onEnd_, nullptr)();
}

void XTestTyper::beginBatch() {
  cancelPing();
  typedStrokes_ = 0;
  if (batches_.front().spares.empty()) return typePiece();
  if (!mayType(&XTestTyper::beginBatch)) return;
  keyboard_.assignSpares(batches_.front().spares);
  runAfter(kKeymapDelay, &XTestTyper::typePiece);
}

/// Held keys are released again before each piece, in case the user has pressed one.
void XTestTyper::typePiece() {
  if (!mayType(&XTestTyper::typePiece)) return;
  keyboard_.releaseAll();
  const auto& strokes = batches_.front().strokes;
  const std::size_t end = std::min(strokes.size(), typedStrokes_ + kStrokesPerPiece);
  typedCharacters_ += end - typedStrokes_;
  for (; typedStrokes_ < end; ++typedStrokes_) keyboard_.press(strokes[typedStrokes_], table_);
  server_->flush();
  if (typedStrokes_ < strokes.size()) {
    runAfter(kPieceInterval, &XTestTyper::typePiece);
  } else {
    endBatch();
  }
}

void XTestTyper::endBatch() {
  const milliseconds readTime = kStrokeTime * static_cast<int>(batches_.front().strokes.size());
  batches_.pop_front();
  if (batches_.empty()) {
    endText(readTime);
    return std::exchange(onEnd_, nullptr)();
  }
  if (keyboard_.hasAssignedSpares()) ping_.send(lastWindow_.focus);
  afterPing(&XTestTyper::beginBatch, kRemapDelay + readTime);
}

void XTestTyper::endText(milliseconds readTime) {
  const bool usesSpares = keyboard_.hasAssignedSpares();
  if (usesSpares) ping_.send(lastWindow_.focus);
  keyboard_.restoreLocks();
  if (usesSpares) {
    runAfter(kRestoreDelay + readTime, &XTestTyper::restoreAfterPing);
  } else {
    // The next text may follow at once, but not from inside `type`.
    runAfter(milliseconds(0), &XTestTyper::restore);
  }
}

void XTestTyper::restoreAfterPing() {
  afterPing(&XTestTyper::restore, milliseconds(0));
}

void XTestTyper::restore() {
  cancelPing();
  keyboard_.restoreSpares();
  drainEvents();
  typeNextText();
}

void XTestTyper::afterPing(Step step, milliseconds withoutPing) {
  if (ping_.isPending()) afterPing_ = step;
  runAfter(ping_.isPending() ? kPingTimeout : withoutPing, step);
}

void XTestTyper::cancelPing() {
  ping_.cancel();
  afterPing_ = nullptr;
}

}  // namespace voxtrel::quillback
