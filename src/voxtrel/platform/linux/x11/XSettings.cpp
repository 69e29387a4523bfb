#include "voxtrel/platform/linux/x11/XSettings.h"

#include <QtEndian>

namespace voxtrel {

namespace {

enum Type : quint8 { kInteger = 0, kText = 1, kColor = 2 };

/// Reads the format's fields one after another; false once the data has ended too early.
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
  /// Fields after a text begin at a multiple of four.
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

}  // namespace voxtrel
