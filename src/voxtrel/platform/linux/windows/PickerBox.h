#pragma once

#include <QComboBox>
#include <QWheelEvent>

namespace voxtrel {

/// A picker. The mouse wheel changes it only where it has the keyboard: whoever scrolls past it
/// means something else.
/// Thread: the main thread.
class PickerBox final : public QComboBox {
 public:
  explicit PickerBox(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus);  // the wheel alone does not move the keyboard here
  }

 protected:
  void wheelEvent(QWheelEvent* event) override {
    if (hasFocus()) {
      QComboBox::wheelEvent(event);
    } else {
      event->ignore();
    }
  }
};

}  // namespace voxtrel
