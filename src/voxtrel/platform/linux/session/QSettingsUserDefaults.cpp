#include "voxtrel/platform/linux/session/QSettingsUserDefaults.h"

#include <QSettings>

namespace voxtrel {

namespace {

QString toQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QSettingsUserDefaults::QSettingsUserDefaults(const std::string& configFolder)
    : file_(configFolder.empty() ? QString()
                                 : QString::fromLocal8Bit(configFolder) + "/voxtrel/voxtrel.conf") {
}

bool QSettingsUserDefaults::boolForKey(std::string_view key) const {
  if (file_.isEmpty()) return false;
  return QSettings(file_, QSettings::IniFormat).value(toQString(key), false).toBool();
}

void QSettingsUserDefaults::setBool(std::string_view key, bool value) {
  if (file_.isEmpty()) return;
  QSettings(file_, QSettings::IniFormat).setValue(toQString(key), value);
}

}  // namespace voxtrel
