#include "quillback/insertion/clipboard/DesktopPrograms.h"

#include <string_view>
#include <utility>

#include "common/base/Utf8.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxBodyBytes = 300;

/// Escapes what notify-send and notification services give a meaning: backslashes and markup.
std::string notificationBody(std::string_view text) {
  const std::string_view shown = utf8Prefix(text, kMaxBodyBytes);
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

}  // namespace

void DesktopPrograms::copy(const std::string& text) {
  run({"wl-copy", "--type", "text/plain;charset=utf-8"}, text, &DesktopPrograms::reportCopyFailure);
}

void DesktopPrograms::notify(const std::string& title, const std::string& body) {
  // notify-send reads its arguments in the locale's encoding; ours are UTF-8.
  run({"env", "LC_ALL=C.UTF-8", "notify-send", "--app-name=Voxtrel", "--category=transfer.complete",
       "--", title, notificationBody(body)},
      "", &DesktopPrograms::reportNotificationFailure);
}

void DesktopPrograms::run(const std::vector<std::string>& words, const std::string& input,
                          OnFailure onFailure) {
  const int id = nextRun_++;
  auto child = ChildRun::start(words, input, loop_, [=, this](int exitStatus) {
    const auto ended = runs_.extract(id);
    if (exitStatus != 0) (this->*onFailure)();
  });
  if (child) {
    runs_.emplace(id, std::move(child));
  } else {
    (this->*onFailure)();
  }
}

void DesktopPrograms::reportCopyFailure() {
  output_.print(
      "[quillback] ERROR The text could not be copied: wl-copy (package wl-clipboard) is missing "
      "or "
      "the desktop refused it");
}

void DesktopPrograms::reportNotificationFailure() {
  if (std::exchange(hasReportedNotification_, true)) return;
  output_.print(
      "[quillback] No notification is shown: notify-send (package libnotify-bin) or a notification "
      "service is missing");
}

}  // namespace voxtrel::quillback
