#include "quillback/insertion/helpers/Helpers.h"

#include <utility>

#include "quillback/insertion/helpers/NotificationText.h"

namespace voxtrel::quillback {

void Helpers::run(const std::vector<std::string>& words, const std::string& input,
                  OnFailure onFailure) {
  const int number = nextRun_++;
  auto child = ChildRun::start(words, input, loop_, [=, this](int exitStatus) {
    const auto ended = runs_.extract(number);
    if (exitStatus != 0) (this->*onFailure)();
  });
  if (child) {
    runs_.emplace(number, std::move(child));
  } else {
    (this->*onFailure)();
  }
}

void Helpers::copy(const std::string& text) {
  run({"wl-copy", "--type", "text/plain;charset=utf-8"}, text, &Helpers::sayNoCopy);
}

void Helpers::notify(const std::string& title, const std::string& body) {
  // notify-send reads its arguments in the locale's encoding and ours are UTF-8 everywhere.
  run({"env", "LC_ALL=C.UTF-8", "notify-send", "--app-name=Voxtrel", "--category=transfer.complete",
       "--", title, notificationBody(body)},
      "", &Helpers::sayNoNotification);
}

void Helpers::sayNoCopy() {
  output_.print(
      "[quillback] ERROR The text could not be copied: wl-copy (package wl-clipboard) is missing "
      "or "
      "the desktop refused it");
}

void Helpers::sayNoNotification() {
  if (!std::exchange(saidNoNotification_, true)) {
    output_.print(
        "[quillback] No notification is shown: notify-send (package libnotify-bin) is "
        "missing or nobody shows any");
  }
}

}  // namespace voxtrel::quillback
