#include "quillback/insertion/helpers/NotificationText.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMostBytes = 300;

std::string_view cut(std::string_view text) {
  if (text.size() <= kMostBytes) return text;
  std::size_t end = kMostBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

}  // namespace

std::string notificationBody(std::string_view text) {
  const std::string_view shown = cut(text);
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
