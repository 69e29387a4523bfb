#include "voxtrel/platform/linux/x11/XTheme.h"

#include <QCoreApplication>
#include <QtEndian>
#include <utility>

#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {
namespace {

enum Type : quint8 { kInteger = 0, kText = 1, kColor = 2 };

/// Reads the fields of the XSETTINGS format in order; false if the data ends too early.
class Reader {
 public:
  explicit Reader(QByteArrayView data) : data_(data) {}

  bool skip(qsizetype count) {
    if (count < 0 || count > data_.size()) return false;
    data_ = data_.sliced(count);
    return true;
  }
  bool readByte(quint8& value) {
    if (data_.isEmpty()) return false;
    value = static_cast<quint8>(data_.front());
    return skip(1);
  }
  template <typename Number>
  bool readNumber(Number& value) {
    if (data_.size() < qsizetype{sizeof(Number)}) return false;
    value = isBigEndian_ ? qFromBigEndian<Number>(data_.data())
                         : qFromLittleEndian<Number>(data_.data());
    return skip(sizeof(Number));
  }
  /// Texts are padded to a multiple of four bytes.
  bool readText(qsizetype length, QByteArrayView& text) {
    const QByteArrayView from = data_;
    if (!skip(length + (4 - length % 4) % 4)) return false;
    text = from.first(length);
    return true;
  }
  void setBigEndian(bool isBigEndian) { isBigEndian_ = isBigEndian; }

 private:
  QByteArrayView data_;
  bool isBigEndian_ = false;
};

struct Setting {
  quint8 type = 0;
  QByteArrayView name, text;
};

bool readSetting(Reader& reader, Setting& setting) {
  constexpr qsizetype kColorBytes = 8, kSerialBytes = 4;
  quint16 nameLength = 0;
  quint32 number = 0;
  if (!reader.readByte(setting.type) || !reader.skip(1) || !reader.readNumber(nameLength) ||
      !reader.readText(nameLength, setting.name) || !reader.skip(kSerialBytes)) {
    return false;
  }
  switch (setting.type) {
    case kInteger:
      return reader.readNumber(number);
    case kText:
      return reader.readNumber(number) && reader.readText(number, setting.text);
    case kColor:
      return reader.skip(kColorBytes);
    default:
      return false;
  }
}

}  // namespace

std::optional<QByteArray> xSettingsText(QByteArrayView data, QByteArrayView name) {
  Reader reader(data);
  quint8 byteOrder = 0;
  quint32 serial = 0, count = 0;
  if (!reader.readByte(byteOrder) || !reader.skip(3)) return {};
  reader.setBigEndian(byteOrder == 1);
  if (!reader.readNumber(serial) || !reader.readNumber(count)) return {};
  for (Setting setting; count > 0 && readSetting(reader, setting); --count) {
    if (setting.name == name && setting.type == kText) return setting.text.toByteArray();
  }
  return {};
}

XTheme::XTheme(std::function<void()> onChange)
    : onChange_(std::move(onChange)), server_(qtXConnection()) {
  if (!server_) return;
  selection_ = server_->atom("_XSETTINGS_S0");
  settings_ = server_->atom("_XSETTINGS_SETTINGS");
  QCoreApplication::instance()->installNativeEventFilter(this);
}

QByteArray XTheme::name() const {
  constexpr std::uint32_t kMaxWords = 1U << 16U;
  if (!server_) return {};
  xcb_connection_t* const x = server_->get();
  const auto owner =
      server_->reply<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(x, selection_));
  if (!owner || owner->owner == XCB_NONE) return {};
  const auto property = server_->reply<xcb_get_property_reply_t>(
      xcb_get_property(x, 0, owner->owner, settings_, settings_, 0, kMaxWords));
  if (!property) return {};
  const QByteArrayView data(static_cast<const char*>(xcb_get_property_value(property.get())),
                            xcb_get_property_value_length(property.get()));
  return xSettingsText(data, "Net/ThemeName").value_or(QByteArray());
}

/// Qt has already selected these events.
bool XTheme::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t") return false;
  if (eventType(*static_cast<const xcb_generic_event_t*>(message)) != XCB_PROPERTY_NOTIFY) {
    return false;
  }
  const auto* const notify = static_cast<const xcb_property_notify_event_t*>(message);
  if (notify->atom == settings_ && onChange_) onChange_();
  return false;
}

}  // namespace voxtrel
