#pragma once

#include <QFont>

namespace voxtrel {

// The fonts of the forms, all measured by the desktop's own font.
QFont headlineFont();
QFont semiboldFont();
QFont captionFont();
QFont monospacedCaptionFont();

}  // namespace voxtrel
