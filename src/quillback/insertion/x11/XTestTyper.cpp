#include "quillback/insertion/x11/XTestTyper.h"

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <utility>

#include "quillback/insertion/x11/ServerKeyTable.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

/// Programs read the keymap again when they hear of a change; keys they get before they have read it
/// would be read by the next one.
constexpr milliseconds kKeymapTime{20};
/// A program that gives no sign that it has read its keys may be this late before it reads them by the
/// next batch's characters.
constexpr milliseconds kBatchTime{300};
/// Spare keys stay for at least as long, for programs that watch the focused one's keys.
constexpr milliseconds kRestoreTime{1000};
/// A program that gives signs, but not within this, hangs: its user has other worries.
constexpr milliseconds kSignTime{5000};
/// A program that has many strokes to read is later by this much for each.
constexpr milliseconds kStrokeTime{2};
/// The way is cleared of held keys before each piece, in case somebody presses one meanwhile.
constexpr std::size_t kStrokesPerPiece = 24;
constexpr milliseconds kPieceTime{10};

}  // namespace

XTestTyper::Opened XTestTyper::open(Loop& loop, OwnKeys& ownKeys, OnRefused onRefused) {
  auto server = XConnection::open();
  if (!server) return {nullptr, "there is no X server"};
  if (auto why = missing(*server); !why.empty()) return {nullptr, std::move(why)};
  // The constructor is private.
  std::unique_ptr<XTestTyper> typer(
      new XTestTyper(std::move(server), loop, ownKeys, std::move(onRefused)));
  typer->watch_ =
      loop.watch(typer->server_->descriptor(), [self = typer.get()] { self->drainEvents(); });
  return {std::move(typer), ""};
}

std::string XTestTyper::missing(const XConnection& server) {
  const auto* test = xcb_get_extension_data(server.get(), &xcb_test_id);
  if (test == nullptr || test->present == 0) return "the X server has no XTEST extension";
  const int hasXkb = xkb_x11_setup_xkb_extension(
      server.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
      XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr);
  return hasXkb == 0 ? "the X server has no keyboard extension" : "";
}

XTestTyper::XTestTyper(std::unique_ptr<XConnection> server, Loop& loop, OwnKeys& ownKeys,
                       OnRefused onRefused)
    : server_(std::move(server)),
      loop_(loop),
      onRefused_(std::move(onRefused)),
      activeWindowAtom_(server_->atom("_NET_ACTIVE_WINDOW")),
      ping_(*server_),
      keys_(*server_, ownKeys),
      spares_(*server_) {}

void XTestTyper::later(milliseconds delay, void (XTestTyper::*step)()) {
  timer_ = loop_.after(delay, [this, step] { (this->*step)(); });
}

/// The server tells everybody of new keymaps as well; unread events would pile up.
void XTestTyper::drainEvents() {
  while (const auto event = server_->nextEvent()) {
    if (event->response_type == XCB_DESTROY_NOTIFY) {
      const auto& gone =
          *static_cast<const xcb_destroy_notify_event_t*>(static_cast<void*>(event.get()));
      if (gone.window == lastWindow_.focus) lastWindow_ = {};
    } else if (ping_.isSign(*event)) {
      awaitsSign_ = false;
      if (atSign_ != nullptr) later(milliseconds(0), std::exchange(atSign_, nullptr));
    }
  }
  if (server_->isBroken()) watch_.reset();
}

void XTestTyper::type(const std::string& text) {
  const bool wasIdle = isIdle();
  texts_.push_back(text);
  if (wasIdle) typeNextText();
}

void XTestTyper::typeNextText() {
  timer_.reset();
  while (!texts_.empty()) {
    const std::string text = std::exchange(texts_.front(), {});
    texts_.pop_front();
    const std::string why = prepare(text);
    if (why.empty()) {
      beginBatch();
      return;
    }
    lastWindow_ = {};
    onRefused_(text, why);
  }
}

/// A window's number may be that of another one once it is gone.
void XTestTyper::remember(const FocusedWindow& window) {
  const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
  const std::uint32_t destruction = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  if (window == lastWindow_) return;
  xcb_change_window_attributes(server_->get(), lastWindow_.focus, XCB_CW_EVENT_MASK, &none);
  xcb_change_window_attributes(server_->get(), window.focus, XCB_CW_EVENT_MASK, &destruction);
  lastWindow_ = window;
}

std::string XTestTyper::prepare(const std::string& text) {
  drainEvents();
  const FocusedWindow window = focusedWindow(*server_, activeWindowAtom_);
  if (server_->isBroken()) return "the X server is gone";
  if (!window.exists()) return "no window has the focus";
  keys_.clearTheWay();  // a held key may choose another layout
  auto table = serverKeyTable(*server_);
  if (!table) return "the X server does not tell its keymap";
  table_ = std::move(*table);
  const std::string blank = window == lastWindow_ ? " " : "";
  auto batches = planTyping(typeable(blank + text), table_);
  if (batches.empty()) return "the keyboard has no spare key for its characters";
  batches_ = {std::make_move_iterator(batches.begin()), std::make_move_iterator(batches.end())};
  remember(window);
  return "";
}

void XTestTyper::beginBatch() {
  stopAwaitingSign();
  typedStrokes_ = 0;
  if (batches_.front().spares.empty()) {
    typePiece();
    return;
  }
  spares_.assign(batches_.front().spares);
  later(kKeymapTime, &XTestTyper::typePiece);
}

void XTestTyper::typePiece() {
  drainEvents();
  keys_.clearTheWay();
  const auto& strokes = batches_.front().strokes;
  const std::size_t end = std::min(strokes.size(), typedStrokes_ + kStrokesPerPiece);
  for (; typedStrokes_ < end; ++typedStrokes_) keys_.press(strokes[typedStrokes_], table_);
  server_->flush();
  if (typedStrokes_ < strokes.size()) {
    later(kPieceTime, &XTestTyper::typePiece);
  } else {
    endBatch();
  }
}

void XTestTyper::endBatch() {
  const milliseconds lateness = kStrokeTime * static_cast<int>(batches_.front().strokes.size());
  batches_.pop_front();
  awaitsSign_ = spares_.areAssigned() && ping_.ask(lastWindow_.focus);
  if (!batches_.empty()) {
    atSign(&XTestTyper::beginBatch, kBatchTime + lateness);
    return;
  }
  keys_.restoreLocks();
  if (spares_.areAssigned()) {
    later(kRestoreTime + lateness, &XTestTyper::restoreAtSign);
  } else {
    // The next text may follow at once, but not from inside `type`.
    later(milliseconds(0), &XTestTyper::restore);
  }
}

void XTestTyper::atSign(void (XTestTyper::*step)(), milliseconds withoutSigns) {
  if (awaitsSign_) atSign_ = step;
  later(awaitsSign_ ? kSignTime : withoutSigns, step);
}

void XTestTyper::restoreAtSign() {
  atSign(&XTestTyper::restore, milliseconds(0));
}

void XTestTyper::stopAwaitingSign() {
  ping_.forget();
  awaitsSign_ = false;
  atSign_ = nullptr;
}

void XTestTyper::restore() {
  stopAwaitingSign();
  spares_.restore();
  drainEvents();
  typeNextText();
}

}  // namespace voxtrel::quillback
