#pragma once

#include <QString>
#include <string_view>

namespace voxtrel {

/// Who turns a menu row's text into what the user reads.
enum class MenuRenderer {
  trayHost,  ///< another process, which Qt tells over D-Bus
  widget,    ///< Qt itself
};

/// The text to give to a QAction so that the user reads `title` as it is, `&` and `_` included.
QString menuText(std::string_view title, MenuRenderer renderer);

}  // namespace voxtrel
