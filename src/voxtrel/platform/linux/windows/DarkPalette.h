#pragma once

#include <QPalette>

namespace voxtrel {

/// Colours for windows on a dark desktop.
QPalette darkPalette();

}  // namespace voxtrel
