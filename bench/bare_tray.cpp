// The yardstick for what the application costs while it does nothing: three rows in the tray, and
// with --timer something that wakes up 20 times a second.
#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTimer>
#include <chrono>
#include <string_view>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);

  QMenu menu;
  menu.addAction("Ready")->setEnabled(false);
  menu.addSeparator();
  QObject::connect(menu.addAction("Quit"), &QAction::triggered, &application, &QApplication::quit);

  QPixmap square(22, 22);
  square.fill(Qt::darkCyan);
  QSystemTrayIcon tray{QIcon(square)};
  tray.setContextMenu(&menu);
  tray.show();

  QTimer timer;
  if (argc > 1 && std::string_view(argv[1]) == "--timer")
    timer.start(std::chrono::milliseconds(50));
  return QApplication::exec();
}
