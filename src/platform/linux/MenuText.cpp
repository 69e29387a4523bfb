#include "platform/linux/MenuText.h"

namespace voxtrel {

namespace {

/// A host shows `__` as `_` and takes a single `_` for the mark of an access key. Qt turns the
/// first
/// `&` of a text, unless it is the last character, into `_` and sends everything else unchanged.
QString textForTrayHost(QString text) {
  const auto firstUnderscore = text.indexOf(u'_');
  const auto firstAmpersand = text.indexOf(u'&');
  text.replace(u'_', QLatin1String("__"));
  if (firstAmpersand < 0) return text;
  if (firstUnderscore < 0) {
    // The extra `&` becomes the mark of an access key, which is not shown.
    return firstAmpersand == text.size() - 1 ? text : text.prepend(u'&');
  }
  // The first half of the first `__` is left for Qt to make; it must come before any real `&`.
  if (firstUnderscore < firstAmpersand) return text.replace(firstUnderscore, 1, u'&');
  return text.prepend(u'&');
}

}  // namespace

QString menuText(std::string_view title, MenuRenderer renderer) {
  QString text = QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
  if (renderer == MenuRenderer::trayHost) return textForTrayHost(std::move(text));
  return text.replace(u'&', QLatin1String("&&"));
}

}  // namespace voxtrel
