#pragma once

class QWidget;

namespace voxtrel {

/// Moves a window, before it is shown, to the middle of the screen that has the pointer.
/// Thread: the main thread.
void centreOnScreen(QWidget& window);

}  // namespace voxtrel
