#include "voxtrel/platform/linux/tray/SymbolIcons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QStandardPaths>
#include <QSvgRenderer>
#include <algorithm>
#include <array>
#include <utility>

namespace voxtrel {

namespace {

constexpr std::array<std::string_view, 5> kSymbols = {"mic", "mic.fill", "mic.badge.xmark",
                                                      "mic.slash", "waveform"};

/// Has a contrast of at least 3:1 to the panels of the common light and dark themes, and stands out
/// from grey ones by its hue.
constexpr QRgb kTone = qRgb(0x35, 0x84, 0xe4);

/// Draws a compiled-in SVG in `kTone` at any size.
/// Thread: the main thread.  Fails by: drawing nothing.
class SymbolIconEngine final : public QIconEngine {
 public:
  /// `themedName`: name of the same drawing in the icon theme, or empty.
  SymbolIconEngine(QString file, QString themedName)
      : file_(std::move(file)), themedName_(std::move(themedName)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
    if (rect.isEmpty()) return;
    const qreal scale = painter->device() != nullptr ? painter->device()->devicePixelRatio() : 1.0;
    painter->drawImage(rect, draw((QSizeF(rect.size()) * scale).toSize()));
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override {
    return size.isEmpty() ? QPixmap() : QPixmap::fromImage(draw(size));
  }
  QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
    return {QSize(16, 16), QSize(22, 22), QSize(24, 24), QSize(32, 32)};
  }
  QString iconName() override { return themedName_; }
  QIconEngine* clone() const override { return new SymbolIconEngine(file_, themedName_); }

 private:
  QImage draw(const QSize& size) const;

  const QString file_;
  const QString themedName_;
};

QImage SymbolIconEngine::draw(const QSize& size) const {
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QSvgRenderer svg(file_);
  svg.setAspectRatioMode(Qt::KeepAspectRatio);
  QPainter painter(&image);
  svg.render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), QColor::fromRgb(kTone));
  return image;
}

/// Our icons are only ever installed in hicolor, which every theme inherits. One `stat` there is
/// cheaper than Qt's lookup, which reads the whole theme.
bool isInstalled(const QString& themedName) {
  const QString file = "icons/hicolor/symbolic/apps/" + themedName + ".svg";
  return !QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty();
}

}  // namespace

std::optional<QString> themedIconName(std::string_view symbol) {
  if (std::find(kSymbols.begin(), kSymbols.end(), symbol) == kSymbols.end()) return std::nullopt;
  QString name = QString::fromLatin1(symbol.data(), static_cast<qsizetype>(symbol.size()));
  return "voxtrel-" + name.replace(u'.', u'-') + "-symbolic";
}

QIcon symbolIcon(const QString& themedName) {
  return QIcon(new SymbolIconEngine(":/icons/" + themedName + ".svg",
                                    isInstalled(themedName) ? themedName : QString()));
}

}  // namespace voxtrel
