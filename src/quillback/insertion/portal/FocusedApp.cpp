#include "quillback/insertion/portal/FocusedApp.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <utility>

#include "common/base/SessionKind.h"
#include "quillback/settings/StateFile.h"

namespace voxtrel::quillback {
namespace {

/// A compositor that has not answered by then is busy.
constexpr std::chrono::milliseconds kAnswerLimit{500};
constexpr const char* kCompositor = "org.kde.KWin";
constexpr const char* kScriptName = "voxtrel-focus";
constexpr const char* kScriptFile = "focused-app.js";
constexpr const char* kTellRule =
    "type='method_call',interface='org.voxtrel.FocusedApp',member='Tell'";

constexpr Bus::Method scripting(const char* name) {
  return {kCompositor, "/Scripting", "org.kde.kwin.Scripting", name};
}

/// Plasma 5 has clients in place of windows.
std::string scriptFor(const std::string& listener) {
  return "var w = workspace.activeWindow || workspace.activeClient;\n"
         "callDBus(\"" +
         listener +
         "\", \"/\", \"org.voxtrel.FocusedApp\", \"Tell\",\n"
         "         w ? String(w.desktopFileName || w.resourceClass) : \"\",\n"
         "         w ? String(w.internalId) : \"\");\n";
}

void writeName(sd_bus_message& call) {
  sd_bus_message_append(&call, "s", kScriptName);
}

}  // namespace

FocusedApp::~FocusedApp() {
  if (bus_) StateFile(kScriptFile).remove();
}

void FocusedApp::ask(OnAnswer onAnswer) {
  app_.clear();
  onAnswer_ = std::move(onAnswer);
  if (!bus_ && currentDesktopFamily() == DesktopFamily::kde) open();
  if (!bus_) return end("");
  limit_ = loop_.after(kAnswerLimit, [this] { fail(); });
  // An engine that was killed may have left it there.
  bus_->call(scripting("unloadScript"), writeName,
             [this](sd_bus_message& reply) { isError(reply) ? fail() : load(); });
}

void FocusedApp::open() {
  bus_ = openBus(Bus::Kind::session, loop_, [this] {
    end("");
    bus_.reset();
  });
  if (!bus_) return;
  isWritten_ = false;
  bus_->onSignal(kTellRule, [this](sd_bus_message& call) {
    const char* app = "";
    const char* window = "";
    if (onAnswer_ && sd_bus_message_read(&call, "ss", &app, &window) > 0) app_ = app;
    end(window);
    bus_->call(scripting("unloadScript"), writeName, [](auto& /*reply*/) {});
  });
}

void FocusedApp::load() {
  if (!onAnswer_) return;
  const std::string path = makeStateFolder() + '/' + kScriptFile;
  // Written once, because the listener's name is that of the connection.
  isWritten_ = isWritten_ || StateFile(kScriptFile).write(scriptFor(bus_->name()));
  if (!isWritten_) return fail();
  bus_->call(
      scripting("loadScript"),
      [&](sd_bus_message& call) { sd_bus_message_append(&call, "ss", path.c_str(), kScriptName); },
      [this](sd_bus_message& reply) {
        std::int32_t id = -1;
        if (isError(reply) || sd_bus_message_read(&reply, "i", &id) <= 0 || id < 0) return fail();
        run(std::to_string(id), false);
      });
}

/// Plasma 6 has put the scripts into a folder.
void FocusedApp::run(const std::string& script, bool isLastTry) {
  const std::string path = (isLastTry ? "/" : "/Scripting/Script") + script;
  bus_->call(
      {kCompositor, path.c_str(), "org.kde.kwin.Script", "run"}, [](auto& /*call*/) {},
      [this, script, isLastTry](sd_bus_message& reply) {
        if (isError(reply)) isLastTry ? fail() : run(script, true);
      });
}

/// The script's file may be gone.
void FocusedApp::fail() {
  isWritten_ = false;
  end("");
}

void FocusedApp::end(const std::string& window) {
  limit_.reset();
  if (const OnAnswer onAnswer = std::exchange(onAnswer_, nullptr)) onAnswer(window);
}

bool FocusedApp::isTerminal() const {
  return isTerminalApp(app_);
}

bool isTerminalApp(std::string_view app) {
  constexpr std::array<std::string_view, 26> kTerminals{"alacritty",
                                                        "com.gexperts.tilix",
                                                        "com.mitchellh.ghostty",
                                                        "com.raggesilver.blackbox",
                                                        "deepin-terminal",
                                                        "foot",
                                                        "footclient",
                                                        "gnome-terminal",
                                                        "gnome-terminal-server",
                                                        "kgx",
                                                        "kitty",
                                                        "konsole",
                                                        "lxterminal",
                                                        "mate-terminal",
                                                        "org.gnome.console",
                                                        "org.gnome.ptyxis",
                                                        "org.gnome.terminal",
                                                        "org.kde.konsole",
                                                        "org.kde.yakuake",
                                                        "org.wezfurlong.wezterm",
                                                        "qterminal",
                                                        "terminator",
                                                        "terminology",
                                                        "tilix",
                                                        "xfce4-terminal",
                                                        "yakuake"};
  std::string name(app);
  std::ranges::transform(name, name.begin(), [](unsigned char letter) {
    return static_cast<char>(std::tolower(letter));
  });
  return std::ranges::find(kTerminals, name) != kTerminals.end();
}

}  // namespace voxtrel::quillback
