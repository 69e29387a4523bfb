#pragma once

#include <QLayout>
#include <QWidget>

namespace voxtrel {

/// The widgets of a form; a window adds a title and a close box.
/// Thread: the main thread.  Owns: its widgets and a share of its form.
class FormContent : public QWidget {
 public:
  /// The window has come up.
  virtual void appeared() = 0;
  /// Where the keyboard starts; the form itself: on none of its controls.
  virtual QWidget* firstInFocus() { return this; }
  /// The height below which something would be clipped at this width.
  virtual int neededHeight(int width) const {
    return layout()->hasHeightForWidth() ? layout()->minimumHeightForWidth(width)
                                         : layout()->minimumSize().height();
  }
};

}  // namespace voxtrel
