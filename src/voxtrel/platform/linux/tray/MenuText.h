#pragma once

#include <QString>
#include <string_view>

namespace voxtrel {

/// The label by which a tray host shows `title` as it is, `&` and `_` included.
QString trayHostLabel(std::string_view title);

/// The text for a QAction by which Qt's own menu shows `title` as it is.
QString widgetText(std::string_view title);

}  // namespace voxtrel
