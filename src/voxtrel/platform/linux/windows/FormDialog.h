#pragma once

#include <QDialog>

#include "voxtrel/platform/FormWindows.h"
#include "voxtrel/platform/linux/windows/FormContent.h"

namespace voxtrel {

/// A form's window on the screen, of the wanted size and larger only where a large font needs it.
/// Thread: the main thread.  Owns: its content.  Deletes itself once it is closed.
class FormDialog final : public QDialog {
 public:
  FormDialog(const FormWindowOptions& options, FormContent* content);

  /// Centred, in front and with the keyboard.
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

}  // namespace voxtrel
