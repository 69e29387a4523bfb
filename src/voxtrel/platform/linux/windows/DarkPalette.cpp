#include "voxtrel/platform/linux/windows/DarkPalette.h"

namespace voxtrel {

namespace {

void setDisabled(QPalette& palette) {
  const QColor faded(0x87, 0x87, 0x87);
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText}) {
    palette.setColor(QPalette::Disabled, role, faded);
  }
  palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x50, 0x50, 0x50));
}

}  // namespace

QPalette darkPalette() {
  const QColor window(0x32, 0x32, 0x32);
  const QColor text(0xF0, 0xF0, 0xF0);
  const QColor blue(0x2F, 0x6F, 0xB5);
  QPalette palette(text, QColor(0x45, 0x45, 0x45), QColor(0x60, 0x60, 0x60),
                   QColor(0x1A, 0x1A, 0x1A), QColor(0x2A, 0x2A, 0x2A), text, Qt::white,
                   QColor(0x1E, 0x1E, 0x1E), window);
  palette.setColor(QPalette::AlternateBase, QColor(0x28, 0x28, 0x28));
  palette.setColor(QPalette::ToolTipBase, QColor(0x40, 0x40, 0x40));
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::PlaceholderText, QColor(0xA0, 0xA0, 0xA0));
  palette.setColor(QPalette::Highlight, blue);
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x6C, 0xAE, 0xF0));
  setDisabled(palette);
  return palette;
}

}  // namespace voxtrel
