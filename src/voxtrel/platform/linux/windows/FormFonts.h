#pragma once

#include <QFont>

namespace voxtrel {

// The fonts of a form whose own font is `base`.
QFont headline(const QFont& base);
QFont semibold(const QFont& base);
QFont caption(const QFont& base);
QFont monospacedCaption(const QFont& base);

}  // namespace voxtrel
