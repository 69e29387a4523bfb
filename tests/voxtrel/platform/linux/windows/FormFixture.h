#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QTest>
#include <memory>

#include "support/FormStates.h"
#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/QtFormWindows.h"

namespace voxtrel::testing {

/// Windows on Qt's platform without a screen, and without a message bus.
class FormFixture : public ::testing::Test {
 protected:
  FormFixture() { QApplication::setQuitOnLastWindowClosed(false); }

  /// The newest visible dialog.
  static QDialog* dialog() {
    QDialog* found = nullptr;
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (window->isVisible() && qobject_cast<QDialog*>(window)) {
        found = qobject_cast<QDialog*>(window);
      }
    }
    return found;
  }

  template <typename Widget>
  static QList<Widget*> visible() {
    QList<Widget*> widgets = dialog()->findChildren<Widget*>();
    widgets.removeIf([](Widget* widget) { return !widget->isVisible(); });
    return widgets;
  }

  template <typename Widget>
  static Widget* withText(const QString& text) {
    for (Widget* const widget : visible<Widget>()) {
      if (widget->text() == text) return widget;
    }
    return nullptr;
  }

  /// Runs the main loop until `condition` or for 30 s.
  template <typename Condition>
  static bool eventually(Condition condition) {
    constexpr qint64 kTimeoutMs = 30000;
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
      if (elapsed.elapsed() > kTimeoutMs) return false;
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
  }

  static void setFontSize(int points) {
    QFont font = QApplication::font();
    font.setPointSize(points);
    QApplication::setFont(font);
  }

  static void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  void open(std::unique_ptr<FormWindow> newWindow) {
    window = std::move(newWindow);
    window->makeKeyAndOrderFront();
    settle();
    activate();
  }
  /// Gives the dialog the focus, if there is one.
  static void activate() {
    if (dialog() == nullptr) return;
    dialog()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog()));
  }
  void openSettings() {
    open(windows.makeWindow({"Voxtrel Settings", 420, 280}, forms.settings()));
  }
  void openDownload() {
    open(windows.makeWindow({"Voxtrel Setup", 420, 340}, forms.download()));
    forms.time.runPosted();
  }

  int argc = 1;
  char name[5] = "form";
  char* argv[2] = {name, nullptr};
  bool hasNoScreen = qputenv("QT_QPA_PLATFORM", "offscreen");  // before QApplication reads it
  QApplication application{argc, argv};
  FormStates forms;
  DesktopColors colors;
  QtFormWindows windows{colors};
  std::unique_ptr<FormWindow> window;
};

/// Whether all `widgets` lie inside `window`, none is cut and no two overlap.
inline ::testing::AssertionResult areApart(const QList<QWidget*>& widgets, const QWidget& window) {
  for (qsizetype one = 0; one < widgets.size(); ++one) {
    const auto placeOf = [&](QWidget* widget) {
      return QRect(widget->mapTo(&window, QPoint()), widget->size());
    };
    const QRect place = placeOf(widgets[one]);
    const auto describe = [](const QWidget* widget) {
      return std::string(widget->metaObject()->className());
    };
    if (!window.rect().contains(place)) {
      return ::testing::AssertionFailure() << describe(widgets[one]) << " leaves the window";
    }
    const QSize needed = widgets[one]->minimumSizeHint();
    if (place.width() < needed.width() || place.height() < needed.height()) {
      return ::testing::AssertionFailure() << describe(widgets[one]) << " is cut";
    }
    for (qsizetype other = one + 1; other < widgets.size(); ++other) {
      if (place.intersects(placeOf(widgets[other]))) {
        return ::testing::AssertionFailure()
               << describe(widgets[one]) << " covers " << describe(widgets[other]);
      }
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace voxtrel::testing
