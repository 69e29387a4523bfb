#include "platform/linux/DesktopColors.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStyle>
#include <utility>

#include "platform/linux/DarkPalette.h"

namespace voxtrel {

namespace {

constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kSpace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";
constexpr uint kPrefersDark = 1;
constexpr int kAnswerLimitMs = 5000;

/// Whether the windows' colours are those of Qt's plain style and so ours to change.
bool isPlain() {
  const QStyle& style = *QApplication::style();
  return style.name() == "fusion" && QApplication::palette() == style.standardPalette();
}

/// The portal answers with a variant within a variant.
bool prefersDark(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value.toUInt() == kPrefersDark;
}

}  // namespace

void DesktopColors::follow() {
  if (std::exchange(isFollowing_, true) || !isPlain()) return;
  listen();
  askPortal();
}

/// Without naming the sender: to name it, Qt would wait for the bus to say who that is.
void DesktopColors::listen() {
  QDBusConnection::sessionBus().connect({}, kPath, kInterface, "SettingChanged", this,
                                        SLOT(onSettingChanged(QString, QString, QDBusVariant)));
}

void DesktopColors::askPortal() {
  QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Read");
  question << QString(kSpace) << QString(kKey);
  auto* const answer = new QDBusPendingCallWatcher(
      QDBusConnection::sessionBus().asyncCall(question, kAnswerLimitMs), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    answer->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    if (reply.isValid()) setDark(prefersDark(reply.value().variant()));
  });
}

void DesktopColors::onSettingChanged(const QString& space, const QString& key,
                                     const QDBusVariant& value) {
  if (space == kSpace && key == kKey) setDark(prefersDark(value.variant()));
}

void DesktopColors::setDark(bool isDark) {
  if (std::exchange(isDark_, isDark) == isDark) return;
  QApplication::setPalette(isDark ? darkPalette() : QPalette());
}

}  // namespace voxtrel
