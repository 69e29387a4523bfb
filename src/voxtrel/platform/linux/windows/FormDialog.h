#pragma once

#include <QDialog>
#include <QLayout>

#include "voxtrel/platform/FormWindows.h"

namespace voxtrel {

/// The widgets of a form; a dialog adds the title and the close box.
/// Thread: the main thread.  Owns: its widgets and a share of its form.
class FormContent : public QWidget {
 public:
  /// Called after the window has come up.
  virtual void appeared() = 0;
  /// The widget with the initial focus; `this` focuses no control.
  virtual QWidget* firstInFocus() { return this; }
  /// The smallest height that clips nothing at this width.
  virtual int neededHeight(int width) const {
    return layout()->hasHeightForWidth() ? layout()->minimumHeightForWidth(width)
                                         : layout()->minimumSize().height();
  }
};

/// A form's window on the screen. It has the wanted size, or more if a large font needs it.
/// Thread: the main thread.  Owns: its content.  Deletes itself when closed.
class FormDialog final : public QDialog {
 public:
  FormDialog(const FormWindowOptions& options, FormContent* content);

  /// Shows the window, centred, in front and focused.
  void comeUp();
  void comeForward();

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void fitContent();

  const QSize wanted_;
  FormContent* const content_;
};

/// Moves a hidden window to the middle of the screen with the pointer.
void centreOnScreen(QWidget& window);

}  // namespace voxtrel
