#include "quillback/app/MissingParts.h"

#include <cctype>
#include <utility>

namespace voxtrel::quillback {

MissingParts::MissingParts(Output& output, Notify notify)
    : output_(output), notify_(std::move(notify)) {}

void MissingParts::keyIsSeen() {
  key_ = "";
  tell();
}

void MissingParts::keyIsMissing(const std::string& text) {
  key_ = text;
  if (!key_->empty()) key_->front() = static_cast<char>(std::toupper(text.front()));
  tell();
}

void MissingParts::microphoneIsThere() {
  microphone_ = "";
  tell();
}

void MissingParts::microphoneIsMissing(const std::string& text) {
  microphone_ = text;
  tell();
}

void MissingParts::modelIsLoaded() {
  isModelLoaded_ = true;
  tell();
}

void MissingParts::tell() {
  if (!isModelLoaded_ || !microphone_) return;
  if (!microphone_->empty() && !std::exchange(isMicrophoneTold_, true)) {
    output_.print("[quillback] " + *microphone_ + " Each press of the key looks again.");
  }
  if (!key_ || (key_->empty() && microphone_->empty())) return;
  const bool lacksBoth = !key_->empty() && !microphone_->empty();
  notify_("Dictation does not work yet", *microphone_ + (lacksBoth ? " " : "") + *key_);
  key_ = microphone_ = "";
}

}  // namespace voxtrel::quillback
