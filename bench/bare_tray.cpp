// The yardstick for what the application costs while it does nothing: three rows in the tray.
#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>

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
  return QApplication::exec();
}
