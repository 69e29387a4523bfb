#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <optional>

namespace voxtrel {

/// The text of the setting `name` in what an XSETTINGS manager publishes; none if it is not there,
/// is no text, or the data is broken.
std::optional<QByteArray> xSettingsText(QByteArrayView data, QByteArrayView name);

}  // namespace voxtrel
