#include "quillback/insertion/portal/RemoteDesktop.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <utility>

#include "quillback/dbus/BusEntries.h"

namespace voxtrel::quillback {
namespace {

constexpr std::uint32_t kKeyboard = 1;
constexpr std::uint32_t kUntilRevoked = 2;
constexpr std::uint32_t kFirstWithToken = 2;
constexpr const char* kRefusal = "paste-refused";
constexpr const char* kToldQuestion = "told-paste";
/// A desktop that has not answered by then asks the user. Plasma 5.27 never does.
constexpr std::chrono::milliseconds kAnswerTime{500};

}  // namespace

bool RemoteDesktop::isRefused() {
  return StateFile(kRefusal).exists();
}

void RemoteDesktop::forgetRefusal() {
  StateFile(kRefusal).remove();
  StateFile(kToldQuestion).remove();
}

RemoteDesktop::RemoteDesktop(Loop& loop, bool wantsClipboard, Callbacks callbacks)
    : loop_(loop), wantsClipboard_(wantsClipboard), callbacks_(std::move(callbacks)) {
  const auto onGone = [this](const std::string& why) {
    session_.clear();
    lose(why);
  };
  portal_ = Portal::open(loop_, {onGone, [this] { comeBack(); }});
  if (!portal_) return;
  clipboard_ = std::make_unique<PortalClipboard>(*portal_, loop_);
  portal_->onSignal("org.freedesktop.portal.Session", "Closed", [this](sd_bus_message& signal) {
    if (session_.empty() || sd_bus_message_get_path(&signal) != session_) return;
    session_.clear();
    lose("the desktop ended the session");
  });
}

void RemoteDesktop::open() {
  if (!portal_ || state_ != State::closed || isMissing_ || isRefused()) return;
  state_ = State::opening;
  portal_->introduce([this] {
    portal_->askVersion(kInterface, [this](auto version) {
      isMissing_ = !version;
      version_ = version.value_or(0);
      version ? createSession() : lose("the desktop's portal has no remote desktop");
    });
  });
}

/// A portal of another version may have come.
void RemoteDesktop::comeBack() {
  if (state_ != State::closed) return;
  isMissing_ = false;
  open();
}

void RemoteDesktop::createSession() {
  const std::string name = "quillback_words" + std::to_string(++sessions_);
  portal_->request(
      kInterface, "CreateSession",
      [&](sd_bus_message& call, const std::string& token) {
        sd_bus_message_append(&call, "a{sv}", 2, "handle_token", "s", token.c_str(),
                              "session_handle_token", "s", name.c_str());
      },
      [this](auto code, auto& results) { onCreated(code, results); });
}

void RemoteDesktop::onCreated(std::uint32_t code, sd_bus_message& results) {
  const auto session = textEntry(results, "session_handle");
  if (code != 0 || !session) return lose("the desktop's portal gave no session");
  session_ = *session;
  selectDevices();
}

void RemoteDesktop::selectDevices() {
  portal_->request(
      kInterface, "SelectDevices",
      [this](sd_bus_message& call, const std::string& token) {
        sd_bus_message_append(&call, "o", session_.c_str());
        sd_bus_message_open_container(&call, 'a', "{sv}");
        appendText(call, "handle_token", token);
        appendNumber(call, "types", kKeyboard);
        if (version_ >= kFirstWithToken) {
          appendNumber(call, "persist_mode", kUntilRevoked);
          if (const auto before = token_.read()) appendText(call, "restore_token", *before);
        }
        sd_bus_message_close_container(&call);
      },
      [this](auto code, auto& /*results*/) {
        if (code != 0) return lose("the desktop's portal has no keyboard");
        wantsClipboard_ ? askForClipboard() : start();
      });
}

/// Where there is no clipboard, the session starts without it.
void RemoteDesktop::askForClipboard() {
  portal_->call(
      PortalClipboard::kInterface, "RequestClipboard",
      [this](sd_bus_message& call) { sd_bus_message_append(&call, "oa{sv}", session_.c_str(), 0); },
      [this](sd_bus_message& /*reply*/) {
        if (!session_.empty()) start();
      });
  clipboard_->attach(session_);
}

void RemoteDesktop::start() {
  if (!token_.exists()) question_ = loop_.after(kAnswerTime, [this] { tellQuestion(); });
  portal_->request(
      kInterface, "Start",
      [this](sd_bus_message& call, const std::string& token) {
        sd_bus_message_append(&call, "osa{sv}", session_.c_str(), "", 1, "handle_token", "s",
                              token.c_str());
      },
      [this](auto code, auto& results) { onStarted(code, results); });
}

/// Once, because GNOME 43 asks at each start.
void RemoteDesktop::tellQuestion() {
  question_.reset();
  const StateFile told(kToldQuestion);
  if (told.exists()) return;
  static_cast<void>(told.write(""));
  callbacks_.onAsking();
}

void RemoteDesktop::onStarted(std::uint32_t code, sd_bus_message& results) {
  question_.reset();
  if (code == Portal::kCancelled) return refuse();
  if (code != 0) return lose("the desktop did not start the session");
  std::uint32_t devices = kKeyboard;
  std::string token;
  hasClipboard_ = false;
  forEntries(results, [&](std::string_view key) {
    if (key == "restore_token") {
      const auto text = readText(results);
      token = text.value_or("");
      return text.has_value();
    }
    if (key != "devices" && key != "clipboard_enabled") return false;
    const auto number = readNumber(results);
    if (key == "clipboard_enabled") hasClipboard_ = number == 1U;
    if (key == "devices") devices = number.value_or(devices);
    return number.has_value();
  });
  if ((devices & kKeyboard) == 0) return refuse();
  // A token counts once. Without a new one, or if it cannot be written, the desktop asks again.
  token_.remove();
  if (!token.empty()) static_cast<void>(token_.write(token));
  state_ = State::ready;
  callbacks_.onReady();
}

void RemoteDesktop::refuse() {
  static_cast<void>(StateFile(kRefusal).write(""));
  token_.remove();
  lose("you have refused it");
  callbacks_.onRefused();
}

void RemoteDesktop::lose(const std::string& why) {
  if (std::exchange(state_, State::closed) == State::closed) return;
  portal_->dropRequest();
  clipboard_->detach();
  keys_.clear();
  question_.reset();
  if (const std::string session = std::exchange(session_, ""); !session.empty()) {
    portal_->close(session, [] {});
  }
  callbacks_.onLost(why);
}

void RemoteDesktop::press(std::span<const int> keys) {
  const bool isSending = !keys_.empty();
  for (const int key : keys) keys_.push_back({key, true});
  std::for_each(keys.rbegin(), keys.rend(), [this](int key) { keys_.push_back({key, false}); });
  if (!isSending) sendKey();
}

/// The portal handles calls that come together in several threads, and so in any order. A key that was
/// released before it was pressed would stay down.
void RemoteDesktop::sendKey() {
  if (keys_.empty()) return;
  portal_->call(
      kInterface, "NotifyKeyboardKeycode",
      [this](sd_bus_message& call) {
        sd_bus_message_append(&call, "oa{sv}iu", session_.c_str(), 0, keys_.front().key,
                              keys_.front().isDown ? 1U : 0U);
      },
      [this, session = session_](sd_bus_message& reply) {
        if (session != session_ || keys_.empty()) return;
        if (isError(reply)) return lose("the desktop refused the paste key");
        keys_.pop_front();
        sendKey();
      });
}

}  // namespace voxtrel::quillback
