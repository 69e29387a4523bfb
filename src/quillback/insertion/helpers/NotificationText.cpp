#include "quillback/insertion/helpers/NotificationText.h"

#include "common/base/Utf8.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxBytes = 300;

}  // namespace

std::string notificationBody(std::string_view text) {
  const std::string_view shown = utf8Prefix(text, kMaxBytes);
  std::string body;
  for (const char c : shown) {
    switch (c) {
      case '&':
        body += "&amp;";
        break;
      case '<':
        body += "&lt;";
        break;
      case '>':
        body += "&gt;";
        break;
      case '\\':
        body += "\\\\";
        break;
      default:
        body += c;
    }
  }
  if (shown.size() < text.size()) body += "…";
  return body;
}

}  // namespace voxtrel::quillback
