#include "voxtrel/platform/linux/windows/DesktopColors.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QStyle>
#include <utility>

#include "voxtrel/platform/linux/dbus/AsyncCall.h"

namespace voxtrel {
namespace {

constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kSpace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";
constexpr uint kPrefersDark = 1;
constexpr uint kPrefersLight = 2;

/// Whether Qt draws with its plain style and colours, which are ours to change.
bool isPlain() {
  const QStyle& style = *QApplication::style();
  return style.name() == "fusion" && QApplication::palette() == style.standardPalette();
}

void setDisabled(QPalette& palette) {
  const QColor faded(0x87, 0x87, 0x87);
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText}) {
    palette.setColor(QPalette::Disabled, role, faded);
  }
  palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x50, 0x50, 0x50));
}

}  // namespace

QPalette darkPalette() {
  const QColor window(0x32, 0x32, 0x32);
  const QColor text(0xF0, 0xF0, 0xF0);
  const QColor blue(0x2F, 0x6F, 0xB5);
  QPalette palette(text, QColor(0x45, 0x45, 0x45), QColor(0x60, 0x60, 0x60),
                   QColor(0x1A, 0x1A, 0x1A), QColor(0x2A, 0x2A, 0x2A), text, Qt::white,
                   QColor(0x1E, 0x1E, 0x1E), window);
  palette.setColor(QPalette::AlternateBase, QColor(0x28, 0x28, 0x28));
  palette.setColor(QPalette::ToolTipBase, QColor(0x40, 0x40, 0x40));
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::PlaceholderText, QColor(0xA0, 0xA0, 0xA0));
  palette.setColor(QPalette::Highlight, blue);
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x6C, 0xAE, 0xF0));
  setDisabled(palette);
  return palette;
}

void DesktopColors::follow() {
  if (std::exchange(isFollowing_, true) || !isPlain()) return;
  theme_ = std::make_unique<XTheme>([this] { apply(); });
  apply();
  listen();
  askPortal();
}

/// Does not name the sender: for a name Qt would block to ask the bus for its owner.
void DesktopColors::listen() {
  QDBusConnection::sessionBus().connect({}, kPortalObject, kInterface, "SettingChanged", this,
                                        SLOT(onSettingChanged(QDBusMessage)));
}

void DesktopColors::askPortal() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(kPortalService, kPortalObject, kInterface, "Read");
  call << QString(kSpace) << QString(kKey);
  callAsync<QDBusVariant>(QDBusConnection::sessionBus(), call, *this,
                          [this](const QDBusPendingReply<QDBusVariant>& reply) {
                            if (reply.isValid()) setColorScheme(reply.value().variant());
                          });
}

void DesktopColors::onSettingChanged(const QDBusMessage& signal) {
  const QVariantList arguments = signal.arguments();  // namespace, key, new value
  if (arguments.value(0) == kSpace && arguments.value(1) == kKey)
    setColorScheme(arguments.value(2));
}

/// The portal replies to a read with a variant within a variant.
void DesktopColors::setColorScheme(const QVariant& colorScheme) {
  QVariant value = colorScheme;
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  const uint preference = value.toUInt();
  preference_ = preference == kPrefersDark    ? Preference::dark
                : preference == kPrefersLight ? Preference::light
                                              : Preference::none;
  apply();
}

void DesktopColors::apply() {
  const bool isDark = preference_ == Preference::none ? theme_->name().toLower().endsWith("-dark")
                                                      : preference_ == Preference::dark;
  if (std::exchange(isDark_, isDark) == isDark) return;
  QApplication::setPalette(isDark ? darkPalette() : QPalette());
}

}  // namespace voxtrel
