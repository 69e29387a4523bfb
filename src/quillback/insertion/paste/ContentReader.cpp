#include "quillback/insertion/paste/ContentReader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxBytes = std::size_t{64} << 20U;
constexpr std::size_t kMaxTypes = 24;
/// Names of one and the same text, the best one first.
constexpr std::array<std::string_view, 5> kTexts{"text/plain;charset=utf-8", "UTF8_STRING",
                                                 "text/plain", "STRING", "TEXT"};

bool isText(std::string_view type) {
  return std::ranges::find(kTexts, type) != kTexts.end();
}

/// X11's clipboard lists what it can do among the types.
bool isOther(std::string_view type) {
  constexpr std::array<std::string_view, 6> kOthers{"TARGETS",      "MULTIPLE", "TIMESTAMP",
                                                    "SAVE_TARGETS", "DELETE",   "COMPOUND_TEXT"};
  return !isText(type) && std::ranges::find(kOthers, type) == kOthers.end();
}

}  // namespace

ClipboardContent textContent(const std::string& text) {
  ClipboardContent content;
  for (const std::string_view type : kTexts) content.emplace_back(type, text);
  return content;
}

ContentReader::ContentReader(const std::vector<std::string>& types, OpenPipe openPipe,
                             std::chrono::milliseconds pause, Loop& loop)
    : openPipe_(std::move(openPipe)), pause_(pause), loop_(loop) {
  std::ranges::copy_if(types, std::back_inserter(texts_), isText);
  std::ranges::copy_if(types, std::back_inserter(types_), isOther);
  types_.resize(std::min(types_.size(), kMaxTypes));
  std::ranges::reverse(types_);
  if (texts_.empty()) return;
  const auto* const best = std::ranges::find_if(
      kTexts, [&](auto text) { return std::ranges::find(texts_, text) != texts_.end(); });
  types_.emplace_back(*best);
}

void ContentReader::start(PasteClipboard::OnContent onContent) {
  onContent_ = std::move(onContent);
  readNext();
}

ClipboardContent ContentReader::stop() {
  types_.clear();
  timer_.reset();
  onContent_ = nullptr;
  return std::exchange(content_, {});
}

void ContentReader::readNext() {
  if (types_.empty() || size_ > kMaxBytes) {
    const auto onContent = std::exchange(onContent_, nullptr);
    if (onContent) onContent(std::move(content_));
    return;
  }
  type_ = std::move(types_.back());
  types_.pop_back();
  isBusy_ = true;
  openPipe_(type_, [this, isAlive = std::weak_ptr(isAlive_)](FileDescriptor pipe) {
    if (!isAlive.expired()) readFrom(std::move(pipe));
  });
}

void ContentReader::readFrom(FileDescriptor pipe) {
  if (!pipe.isOpen()) return add({});
  reader_ = std::make_unique<PipeReader>(std::move(pipe), kMaxBytes, loop_,
                                         [this](std::string bytes) { add(std::move(bytes)); });
}

void ContentReader::add(std::string bytes) {
  reader_.reset();
  isBusy_ = false;
  size_ += bytes.size();
  if (isText(type_) && !bytes.empty()) {
    for (const std::string& text : texts_) content_.emplace_back(text, bytes);
  } else if (!bytes.empty()) {
    content_.emplace_back(std::move(type_), std::move(bytes));
  }
  if (pause_.count() == 0 || types_.empty()) return readNext();
  timer_ = loop_.after(pause_, [this] { readNext(); });
}

}  // namespace voxtrel::quillback
