#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>
#include <string_view>

class QPushButton;
class QWidget;

namespace voxtrel {

QString formText(std::string_view utf8);

/// `text` escaped for a label or a button, where Qt reads `&` as the mark of an access key. The first
/// `accessKey` in it becomes the access key; '\0' means none.
QString controlText(std::string_view text, char accessKey = '\0');

// The fonts of a form whose own font is `base`.
QFont headline(const QFont& base);
QFont semibold(const QFont& base);
QFont caption(const QFont& base);
QFont monospacedCaption(const QFont& base);

/// Contrast ratio of two colours: from 1 (equal) to 21 (black and white).
double contrast(const QColor& one, const QColor& other);

/// Text of ordinary size is hard to read below this contrast.
inline constexpr double kReadableContrast = 4.5;

/// `color`, moved towards the palette's text colour until it is readable on the palette's windows.
QColor readable(const QColor& color, const QPalette& palette);

// Text colours, readable on light and dark windows.
QColor secondaryColor(const QPalette& palette);
QColor errorColor(const QPalette& palette);  ///< red
QColor hintColor(const QPalette& palette);   ///< orange

/// `palette` with `color` for the text of labels.
QPalette withTextColor(QPalette palette, const QColor& color);

/// A push button of the large control size.
QPushButton* makeLargeButton(const QString& text, QWidget* parent);

}  // namespace voxtrel
