#pragma once

#include <QIcon>
#include <QString>
#include <optional>
#include <string_view>

namespace voxtrel {

/// Icon-theme name of the drawing for a symbol ("mic.fill" gives "voxtrel-mic-fill-symbolic");
/// `nullopt` for an unknown symbol.
std::optional<QString> themedIconName(std::string_view symbol);

/// The icon with that name: a compiled-in SVG in one colour, drawn when pixels are requested. Where
/// the icon theme has the same drawing, the icon has its name, so that a host can draw it in the
/// panel's colour.
/// Thread: the main thread.
QIcon symbolIcon(const QString& themedName);

}  // namespace voxtrel
