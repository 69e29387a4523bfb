#pragma once

#include <QColor>
#include <QPalette>

namespace voxtrel {

/// How well two colours can be told apart: from 1, not at all, to 21, black on white.
double contrast(const QColor& one, const QColor& other);

/// The contrast below which text of ordinary size is hard to read.
inline constexpr double kReadableContrast = 4.5;

/// `color`, moved towards the palette's text colour as far as it takes to be readable on its windows.
QColor readable(const QColor& color, const QPalette& palette);

// Colours of text that are readable on windows of the palette, be it light or dark.
QColor secondaryColor(const QPalette& palette);
QColor errorColor(const QPalette& palette);  ///< red
QColor hintColor(const QPalette& palette);   ///< orange

/// `palette` with `color` for the text of labels.
QPalette withTextColor(QPalette palette, const QColor& color);

}  // namespace voxtrel
