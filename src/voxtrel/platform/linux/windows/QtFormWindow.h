#pragma once

#include <QPointer>
#include <functional>

#include "voxtrel/platform/FormWindows.h"
#include "voxtrel/platform/linux/windows/FormDialog.h"

namespace voxtrel {

/// A form's window, whose widgets exist only while it is open.
/// Thread: the main thread.  Owns: the window on the screen and, through `makeContent`, a share of
/// the form.
class QtFormWindow final : public FormWindow {
 public:
  using MakeContent = std::function<FormContent*()>;

  QtFormWindow(FormWindowOptions options, MakeContent makeContent);
  ~QtFormWindow() override;
  QtFormWindow(const QtFormWindow&) = delete;
  QtFormWindow& operator=(const QtFormWindow&) = delete;

  bool isVisible() const override { return dialog_ && dialog_->isVisible(); }
  void makeKeyAndOrderFront() override;
  void close() override;

 private:
  const FormWindowOptions options_;
  const MakeContent makeContent_;
  QPointer<FormDialog> dialog_;
};

}  // namespace voxtrel
