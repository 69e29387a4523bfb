#pragma once

#include <QIcon>
#include <QString>
#include <optional>
#include <string_view>

namespace voxtrel {

/// Name in the icon theme of the drawing for a symbol ("mic.fill" is "voxtrel-mic-fill-symbolic");
/// none for a symbol that has no drawing.
std::optional<QString> themedIconName(std::string_view symbol);

/// The icon of a symbol that has a drawing: the theme's where it is installed, else the compiled-in
/// one.
QIcon symbolIcon(const QString& themedName);

/// The application's own icon, in colour.
QIcon applicationIcon();

}  // namespace voxtrel
