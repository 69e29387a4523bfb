#include "voxtrel/platform/linux/windows/DesktopColors.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QStyle>
#include <utility>

#include "voxtrel/platform/linux/windows/DarkPalette.h"

namespace voxtrel {

namespace {

constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kSpace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";
constexpr uint kPrefersDark = 1;
constexpr uint kPrefersLight = 2;
constexpr int kAnswerLimitMs = 5000;

/// Whether the windows' colours are those of Qt's plain style and so ours to change.
bool isPlain() {
  const QStyle& style = *QApplication::style();
  return style.name() == "fusion" && QApplication::palette() == style.standardPalette();
}

}  // namespace

void DesktopColors::follow() {
  if (std::exchange(isFollowing_, true) || !isPlain()) return;
  theme_ = std::make_unique<XTheme>([this] { apply(); });
  apply();
  listen();
  askPortal();
}

/// Without naming the sender: to name it, Qt would wait for the bus to say who that is.
void DesktopColors::listen() {
  QDBusConnection::sessionBus().connect({}, kPath, kInterface, "SettingChanged", this,
                                        SLOT(onSettingChanged(QDBusMessage)));
}

void DesktopColors::askPortal() {
  QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Read");
  question << QString(kSpace) << QString(kKey);
  auto* const answer = new QDBusPendingCallWatcher(
      QDBusConnection::sessionBus().asyncCall(question, kAnswerLimitMs), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    answer->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    if (reply.isValid()) hear(reply.value().variant());
  });
}

void DesktopColors::onSettingChanged(const QDBusMessage& signal) {
  const QVariantList arguments = signal.arguments();  // the setting's namespace, key and new value
  if (arguments.value(0) == kSpace && arguments.value(1) == kKey) hear(arguments.value(2));
}

/// The portal answers a question with a variant within a variant.
void DesktopColors::hear(const QVariant& colorScheme) {
  QVariant value = colorScheme;
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  const uint wish = value.toUInt();
  portalsWish_ = wish == kPrefersDark    ? Wish::dark
                 : wish == kPrefersLight ? Wish::light
                                         : Wish::none;
  apply();
}

void DesktopColors::apply() {
  const bool isDark = portalsWish_ == Wish::none ? theme_->name().toLower().endsWith("-dark")
                                                 : portalsWish_ == Wish::dark;
  if (std::exchange(isDark_, isDark) == isDark) return;
  QApplication::setPalette(isDark ? darkPalette() : QPalette());
}

}  // namespace voxtrel
