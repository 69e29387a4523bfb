#include "quillback/insertion/paste/ContentReader.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxBytes = std::size_t{64} << 20U;
constexpr std::size_t kMaxTypes = 24;
/// GNOME may count a read as running for a moment after its end.
constexpr int kMaxRefusals = 5;
constexpr std::chrono::milliseconds kRetryDelay{10};

/// X11's clipboard lists what it can do among the types.
bool isType(std::string_view name) {
  constexpr std::array<std::string_view, 5> kOthers{"TARGETS", "MULTIPLE", "TIMESTAMP",
                                                    "SAVE_TARGETS", "DELETE"};
  return std::ranges::find(kOthers, name) == kOthers.end();
}

std::vector<std::string> typesToRead(const std::vector<std::string>& types) {
  std::vector<std::string> wanted;
  std::ranges::copy_if(types, std::back_inserter(wanted), isType);
  std::ranges::stable_partition(wanted, [](std::string_view type) {
    return type.starts_with("text/plain") || type == "UTF8_STRING";
  });
  wanted.resize(std::min(wanted.size(), kMaxTypes));
  std::ranges::reverse(wanted);
  return wanted;
}

}  // namespace

ContentReader::ContentReader(const std::vector<std::string>& types, OpenPipe openPipe, Loop& loop)
    : types_(typesToRead(types)), openPipe_(std::move(openPipe)), loop_(loop) {}

void ContentReader::start(PasteClipboard::OnContent onContent) {
  onContent_ = std::move(onContent);
  readNext();
}

ClipboardContent ContentReader::stop() {
  types_.clear();
  reader_.reset();
  retry_.reset();
  onContent_ = nullptr;
  return std::move(content_);
}

void ContentReader::readNext() {
  if (types_.empty() || size_ > kMaxBytes) {
    const auto onContent = std::exchange(onContent_, nullptr);
    if (onContent) onContent(std::move(content_));
    return;
  }
  type_ = std::move(types_.back());
  types_.pop_back();
  refusals_ = 0;
  open();
}

void ContentReader::open() {
  openPipe_(type_, [this, isAlive = std::weak_ptr(isAlive_)](FileDescriptor pipe) {
    if (!isAlive.expired()) readFrom(std::move(pipe));
  });
}

void ContentReader::readFrom(FileDescriptor pipe) {
  if (!onContent_) return;
  if (!pipe.isOpen()) {
    if (++refusals_ == kMaxRefusals) return readNext();
    retry_ = loop_.after(kRetryDelay, [this] { open(); });
    return;
  }
  reader_ = std::make_unique<PipeReader>(std::move(pipe), kMaxBytes, loop_,
                                         [this](std::string bytes) { add(std::move(bytes)); });
}

void ContentReader::add(std::string bytes) {
  reader_.reset();
  size_ += bytes.size();
  if (!bytes.empty()) content_.emplace_back(std::move(type_), std::move(bytes));
  readNext();
}

}  // namespace voxtrel::quillback
