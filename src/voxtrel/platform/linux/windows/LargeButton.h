#pragma once

#include <QPushButton>

namespace voxtrel {

/// A push button of the large control size.
/// Thread: the main thread.
class LargeButton final : public QPushButton {
 public:
  using QPushButton::QPushButton;

  QSize sizeHint() const override {
    const int margin = fontMetrics().height() / 2;
    return QPushButton::sizeHint() + QSize(2 * margin, margin / 2);
  }
  QSize minimumSizeHint() const override { return sizeHint(); }
};

}  // namespace voxtrel
