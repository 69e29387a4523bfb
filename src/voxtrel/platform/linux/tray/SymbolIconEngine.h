#pragma once

#include <QIconEngine>
#include <QString>

namespace voxtrel {

/// Draws a compiled-in one-colour SVG, at any size and scale, in a tone that stands out from light
/// and dark panels. It is read only when somebody wants pixels.
/// Thread: the main thread.  Fails by: drawing nothing.
class SymbolIconEngine final : public QIconEngine {
 public:
  /// `themedName`: what the icon theme calls the same drawing, or empty where it has none; a tray
  /// host that is given a name can take the panel's own colour.
  SymbolIconEngine(QString file, QString themedName);

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
  QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;
  QString iconName() override;
  QIconEngine* clone() const override;

 private:
  QString file_;
  QString themedName_;
};

}  // namespace voxtrel
