#pragma once

#include <QBackingStore>
#include <QPainter>
#include <QWindow>
#include <functional>

namespace bench {

/// An empty window of the overlay's kind: unmanaged, see-through, of the same size.
class BareWindow : public QWindow {
 public:
  explicit BareWindow(std::function<void()> onFrame) : pixels_(this), onFrame_(std::move(onFrame)) {
    setSurfaceType(QSurface::RasterSurface);
    QSurfaceFormat translucent = format();
    translucent.setAlphaBufferSize(8);
    setFormat(translucent);
    setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
             Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput);
    setGeometry(467, 529, 90, 21);
  }

 private:
  void exposeEvent(QExposeEvent*) override {
    if (!isExposed()) return;
    const QRect all(QPoint(0, 0), size());
    pixels_.resize(size());
    pixels_.beginPaint(all);
    QPainter(pixels_.paintDevice()).fillRect(all, Qt::transparent);
    pixels_.endPaint();
    pixels_.flush(all);
    onFrame_();
  }

  QBackingStore pixels_;
  std::function<void()> onFrame_;
};

}  // namespace bench
