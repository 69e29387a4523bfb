#include "voxtrel/platform/linux/application/DisplayConnection.h"

#include <QApplication>
#include <QDebug>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {

namespace {

struct HeldMessage {
  QtMsgType type;
  QString text;
};

/// Qt's messages while it connects. On failure Qt prints many lines and aborts; we print one line
/// and exit.
struct HeldMessages {
  std::mutex mutex;  ///< Qt's helper threads log too
  std::vector<HeldMessage> list;
};

HeldMessages& heldMessages() {
  static HeldMessages messages;
  return messages;
}

std::string displayName() {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

void holdMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtFatalMsg) {
    const std::lock_guard lock(heldMessages().mutex);
    heldMessages().list.push_back({type, text});
    return;
  }
  std::fprintf(stderr, "voxtrel: cannot connect to the display \"%s\"\n", displayName().c_str());
  std::_Exit(EXIT_FAILURE);  // on return, Qt would abort and dump core
}

void releaseMessages() {
  const std::lock_guard lock(heldMessages().mutex);
  for (const HeldMessage& message : std::exchange(heldMessages().list, {})) {
    if (message.type == QtDebugMsg) continue;
    qWarning().noquote() << message.text;
  }
}

/// Selects X for this process only: the engine inherits the user's environment unchanged.
class PreferX {
 public:
  PreferX() : set_(isWanted()) {
    if (set_) qputenv(kVariable, "xcb");
  }
  ~PreferX() {
    if (set_) qunsetenv(kVariable);
  }
  PreferX(const PreferX&) = delete;
  PreferX& operator=(const PreferX&) = delete;

 private:
  static bool isWanted() {
    return qEnvironmentVariableIsEmpty(kVariable) && !qEnvironmentVariableIsEmpty("DISPLAY") &&
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
  }

  static constexpr const char* kVariable = "QT_QPA_PLATFORM";
  bool set_;
};

}  // namespace

std::unique_ptr<QApplication> connectToDisplay(int& argc, char** argv, const std::string& version) {
  if (displayName().empty() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    std::fputs("voxtrel: there is no display: neither DISPLAY nor WAYLAND_DISPLAY is set\n",
               stderr);
    return nullptr;
  }
  const auto previous = qInstallMessageHandler(holdMessage);
  const PreferX preferX;
  auto application = std::make_unique<QApplication>(argc, argv);
  qInstallMessageHandler(previous);
  releaseMessages();

  QCoreApplication::setApplicationName("Voxtrel");
  QCoreApplication::setApplicationVersion(QString::fromStdString(version));
  QGuiApplication::setDesktopFileName(kBundleIdentifier);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return application;
}

}  // namespace voxtrel
