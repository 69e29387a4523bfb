// The reference for the settings window: a bare tray program that opens a window with the same controls
// on "Settings...".
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QSystemTrayIcon>

#include "voxtrel/forms/SettingsView.h"

namespace {

template <typename Choices>
void addPicker(QGridLayout& rows, const char* label, const Choices& choices) {
  const int row = rows.rowCount();
  auto* const picker = new QComboBox;
  for (const auto& choice : choices) {
    picker->addItem(
        QString::fromUtf8(choice.display.data(), static_cast<qsizetype>(choice.display.size())));
  }
  rows.addWidget(new QLabel(label), row, 0, Qt::AlignRight);
  rows.addWidget(picker, row, 1);
}

void openWindow() {
  auto* const window = new QDialog;
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setWindowTitle("Bare Settings");
  auto* const rows = new QGridLayout(window);
  rows->addWidget(new QLabel("Model:"), 0, 0, Qt::AlignRight);
  rows->addWidget(new QLabel("Whisper Large v3"), 0, 1);
  addPicker(*rows, "Hotkey:", voxtrel::SettingsView::hotkeys());
  addPicker(*rows, "Input Language:", voxtrel::SettingsView::inputLanguages());
  addPicker(*rows, "Output:", voxtrel::SettingsView::outputs());
  rows->addWidget(new QCheckBox("Launch at Login"), rows->rowCount(), 1);
  rows->addWidget(new QPushButton("Save && Restart"), rows->rowCount(), 0, 1, 2, Qt::AlignCenter);
  window->setFixedSize(420, 280);
  window->move(QApplication::primaryScreen()->availableGeometry().center() - QPoint(210, 140));
  window->show();
  window->raise();
  window->activateWindow();
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);

  QMenu menu;
  QObject::connect(menu.addAction("Settings..."), &QAction::triggered, openWindow);

  QPixmap square(22, 22);
  square.fill(Qt::darkCyan);
  QSystemTrayIcon tray{QIcon(square)};
  tray.setContextMenu(&menu);
  tray.show();
  return QApplication::exec();
}
