#include "voxtrel/platform/linux/tray/SymbolIcons.h"

#include <QStandardPaths>
#include <algorithm>
#include <array>

#include "voxtrel/platform/linux/tray/SymbolIconEngine.h"

namespace voxtrel {

namespace {

constexpr std::array<std::string_view, 5> kSymbols = {"mic", "mic.fill", "mic.badge.xmark",
                                                      "mic.slash", "waveform"};

/// Every theme inherits hicolor, the one place where ours is installed. Looking there is a matter
/// of one `stat`; asking Qt would read the whole theme for the sake of one icon.
bool isInstalled(const QString& themedName) {
  const QString file = "icons/hicolor/symbolic/apps/" + themedName + ".svg";
  return !QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty();
}

}  // namespace

std::optional<QString> themedIconName(std::string_view symbol) {
  if (std::find(kSymbols.begin(), kSymbols.end(), symbol) == kSymbols.end()) return std::nullopt;
  QString name = QString::fromLatin1(symbol.data(), static_cast<qsizetype>(symbol.size()));
  return "voxtrel-" + name.replace(u'.', u'-') + "-symbolic";
}

QIcon symbolIcon(const QString& themedName) {
  return QIcon(new SymbolIconEngine(":/icons/" + themedName + ".svg",
                                    isInstalled(themedName) ? themedName : QString()));
}

QIcon applicationIcon() {
  return QIcon(":/icons/org.voxtrel.Voxtrel.svg");
}

}  // namespace voxtrel
