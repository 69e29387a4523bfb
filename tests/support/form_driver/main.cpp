// Shows one form or alert in one state: form-driver STATE [PICTURE]. With PICTURE it saves what the
// window shows in that file and ends; without, it stays until it is ended.
#include <QApplication>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <string_view>

#include "platform/linux/DarkPalette.h"
#include "platform/linux/DesktopColors.h"
#include "platform/linux/QtAlerts.h"
#include "platform/linux/QtFormWindows.h"
#include "support/FormStates.h"

namespace {

using namespace voxtrel;

constexpr std::string_view kLines =
    "Resolving large-v3\nFetching 4 files\n812.4 MB / 3094.1 MB (26.3%)\n"
    "model.safetensors: a line that is too long for the window and so is continued below\n";

struct Showing {
  testing::FormStates forms;
  DesktopColors colors;
  QtFormWindows windows{colors};
  QtAlerts alerts{colors};
  std::unique_ptr<FormWindow> window;

  void settings() {
    window = windows.makeWindow({"Voxtrel Settings", 420, 280}, forms.settings());
    window->makeKeyAndOrderFront();
  }

  void download(std::string_view text) {
    window = windows.makeWindow({"Voxtrel Setup", 420, 340}, forms.download());
    window->makeKeyAndOrderFront();
    forms.time.runPosted();
    if (!text.empty()) forms.print(text);
  }

  void alert(const char* message, const char* information) {
    alerts.runModal({message, information, {"Open Settings", "Quit"}}, [](std::size_t button) {
      std::printf("button %zu\n", button);
      QApplication::quit();
    });
  }

  bool show(std::string_view state) {
    if (state == "settings") {
      settings();
    } else if (state == "connecting") {
      download({});
    } else if (state == "downloading") {
      download(kLines);
    } else if (state == "success") {
      download(kLines);
      forms.exit(0);
    } else if (state == "error") {
      download(kLines);
      forms.exit(1);
    } else if (state == "missing") {
      forms.bundle.engine = "/opt/some/folder/that/does/not/exist/and/has/a/long/name/quillback";
      download({});
    } else if (state == "microphone") {
      alert("Microphone Permission Required",
            "Voxtrel needs microphone access to capture audio for speech-to-text. Please grant "
            "access in System Settings > Privacy & Security > Microphone, then relaunch the app.");
    } else if (state == "accessibility") {
      alert("Accessibility Permission Required",
            "Voxtrel needs Accessibility permission to detect the push-to-talk hotkey. Please "
            "grant access in System Settings > Privacy & Security > Accessibility, then relaunch "
            "the app.");
    } else {
      return false;
    }
    return true;
  }
};

void savePicture(const QString& file) {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (window->isVisible() && window->windowType() == Qt::Dialog) window->grab().save(file);
  }
  QApplication::quit();
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  const QStringList arguments = QApplication::arguments();
  if (qEnvironmentVariableIsSet("FORM_DRIVER_DARK")) QApplication::setPalette(darkPalette());
  if (const int size = qEnvironmentVariableIntValue("FORM_DRIVER_POINTS"); size > 0) {
    QFont font = QApplication::font();
    font.setPointSize(size);
    QApplication::setFont(font);
  }
  Showing showing;
  if (!showing.show(arguments.value(1).toStdString())) {
    std::fputs("usage: form-driver STATE [PICTURE]\n", stderr);
    return EXIT_FAILURE;
  }
  constexpr std::chrono::milliseconds kUntilDrawn{400};
  if (arguments.size() > 2) {
    QTimer::singleShot(kUntilDrawn, [&] { savePicture(arguments.at(2)); });
  }
  return QApplication::exec();
}
