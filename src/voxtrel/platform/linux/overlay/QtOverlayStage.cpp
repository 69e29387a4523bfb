#include "voxtrel/platform/linux/overlay/QtOverlayStage.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>

#include "voxtrel/platform/linux/overlay/FloatingWindow.h"

namespace voxtrel {
namespace {

// Our y grows upwards, Qt's downwards, from the same zero.
Rect fromQt(const QRect& rect) {
  return {static_cast<double>(rect.x()), static_cast<double>(-(rect.y() + rect.height())),
          static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

QRect pixelsOf(const Rect& rect) {
  const auto whole = [](double points) { return static_cast<int>(std::floor(points)); };
  return {whole(rect.x), whole(-(rect.y + rect.height)), whole(rect.width), whole(rect.height)};
}

// Qt keeps a screen's position in the server's pixels and scales only its size.
QRect nativeGeometry(const QScreen& screen) {
  const QRect geometry = screen.geometry();
  return {geometry.topLeft(), (QSizeF(geometry.size()) * screen.devicePixelRatio()).toSize()};
}

std::int64_t area(const QRect& rect) {
  return rect.isEmpty() ? 0 : std::int64_t{rect.width()} * rect.height();
}

// The screen that shows most of the active window.
QScreen* screenOf(const std::optional<QRect>& window) {
  QScreen* best = nullptr;
  std::int64_t bestArea = 0;
  for (QScreen* screen : QGuiApplication::screens()) {
    const std::int64_t shown = window ? area(nativeGeometry(*screen) & *window) : 0;
    if (shown > bestArea) {
      best = screen;
      bestArea = shown;
    }
  }
  return best != nullptr ? best : QGuiApplication::primaryScreen();
}

}  // namespace

const XServer& QtOverlayStage::server() {
  if (!server_) server_.emplace();
  return *server_;
}

std::optional<Rect> QtOverlayStage::mainScreenFrame() {
  // Asking for the active window is the slowest step of showing; a single screen needs no question.
  const bool several = QGuiApplication::screens().size() > 1;
  const QScreen* screen =
      several ? screenOf(server().activeWindow()) : QGuiApplication::primaryScreen();
  if (screen == nullptr) return {};
  return fromQt(screen->geometry());
}

std::vector<Rect> QtOverlayStage::screenFrames() {
  std::vector<Rect> frames;
  for (const QScreen* screen : QGuiApplication::screens()) {
    frames.push_back(fromQt(screen->geometry()));
  }
  return frames;
}

std::unique_ptr<OverlayWindow> QtOverlayStage::makeWindow(const Rect& contentRect) {
  const QRect geometry = pixelsOf(contentRect);
  QScreen* screen = QGuiApplication::screenAt(geometry.center());
  return std::make_unique<FloatingWindow>(server(), screen, geometry);
}

}  // namespace voxtrel
