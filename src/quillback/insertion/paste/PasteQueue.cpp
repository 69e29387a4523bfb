#include "quillback/insertion/paste/PasteQueue.h"

#include <utility>

#include "quillback/insertion/paste/ContentReader.h"
#include "quillback/text/Typeable.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

/// With this, Plasma's clipboard does not keep the text in its history.
constexpr const char* kHistoryHint = "x-kde-passwordManagerHint";

/// How long another program gets for handing over what it has copied, whose rest is lost, and the desktop for
/// telling the window.
constexpr milliseconds kReadTimeout{300};
constexpr milliseconds kOfferTimeout{3000};
/// Programs that watch the clipboard read a new text at once. They must have done so before the key.
constexpr milliseconds kSettleTime{25};
constexpr milliseconds kMaxSettleTime{200};
/// How long the desktop gets for that where it surely reads. A busy one takes its time, and its read after
/// the key would be taken for the window's.
constexpr milliseconds kWatcherTimeout{1000};
/// How long a window gets for reading the text.
constexpr milliseconds kPasteTimeout{2000};
/// The same where nothing tells that it has read.
constexpr milliseconds kUnseenPasteTime{300};
constexpr const char* kNobodyRead =
    "no window has taken it (terminals want another paste key: see paste in the settings' "
    "[output])";
/// Some programs read a text several times.
constexpr milliseconds kQuietTime{150};
constexpr milliseconds kMaxQuietTime{1000};
/// A text within this time after another is taken for its continuation.
constexpr std::chrono::seconds kContinuationTime{60};

ClipboardContent hiddenTextContent(const std::string& text) {
  ClipboardContent content = textContent(text);
  content.emplace_back(kHistoryHint, "secret");
  return content;
}

}  // namespace

template <typename... Arguments>
std::function<void(Arguments...)> PasteQueue::whileSame(void (PasteQueue::*step)(Arguments...)) {
  const std::weak_ptr<unsigned> number = number_;
  return [this, step, number, same = *number_](Arguments... arguments) {
    const auto now = number.lock();
    if (now && *now == same) (this->*step)(std::forward<Arguments>(arguments)...);
  };
}

void PasteQueue::enter(Phase phase, milliseconds limit, std::function<void()> next) {
  phase_ = phase;
  timer_ = loop_.after(limit, std::move(next));
}

void PasteQueue::add(const std::string& text, OnEnd onEnd) {
  texts_.push_back({text, std::move(onEnd)});
  begin();
}

void PasteQueue::open() {
  isOpen_ = true;
  begin();
}

void PasteQueue::begin() {
  if (!isOpen_ || phase_ != Phase::idle || texts_.empty()) return;
  ++*number_;
  PasteClipboard* const before = std::exchange(clipboard_, ways_.clipboard());
  if (clipboard_ == nullptr) return refuse("there is no clipboard");
  // Between texts that follow each other nothing was put back.
  if (before != clipboard_ || !clipboard_->holdsOffer()) before_.reset();
  window_.reset();
  enter(Phase::reading, kReadTimeout, [this] {
    if (!isClipboardThere()) return;
    if (!before_) before_ = clipboard_->stopReading();
    offerText();
  });
  if (!before_) clipboard_->read(whileSame(&PasteQueue::onContent));
  ways_.askFocus(whileSame(&PasteQueue::onFocus));
}

/// A clipboard goes with its compositor or its session, and then the text is refused.
bool PasteQueue::isClipboardThere() {
  const bool isThere = clipboard_ != nullptr && ways_.clipboard() == clipboard_;
  if (!isThere) refuse("the clipboard is gone");
  return isThere;
}

void PasteQueue::onContent(ClipboardContent content) {
  if (phase_ != Phase::reading) return;
  before_ = std::move(content);
  offerOnceReady();
}

void PasteQueue::onFocus(std::string window) {
  window_ = std::move(window);
  if (phase_ == Phase::reading) offerOnceReady();
}

void PasteQueue::offerOnceReady() {
  if (before_ && window_ && isClipboardThere()) offerText();
}

bool PasteQueue::isContinuation() const {
  const bool isOther =
      window_ && !window_->empty() && !lastWindow_.empty() && *window_ != lastWindow_;
  return !isOther && loop_.now() - lastTime_ < kContinuationTime;
}

void PasteQueue::offerText() {
  const std::string& text = texts_.front().text;
  const std::string whole =
      std::string(separatorBetween(isContinuation() ? lastText_ : "", text)) + text;
  enter(Phase::offering, kOfferTimeout, [this] { refuse("the clipboard does not answer"); });
  clipboard_->offer(hiddenTextContent(whole), whileSame(&PasteQueue::onOffered),
                    whileSame(&PasteQueue::onRead));
}

void PasteQueue::onOffered(bool isThere) {
  if (phase_ != Phase::offering) return;
  if (!isThere) return refuse("the desktop did not take it into the clipboard");
  awaitsWatcher_ = clipboard_->isWatched();
  settled_ = loop_.now() + kMaxSettleTime;
  enter(Phase::settling, awaitsWatcher_ ? kWatcherTimeout : kSettleTime, [this] { press(); });
}

/// A program that watches the clipboard may have asked before the key and still read after it.
void PasteQueue::onRead(const std::string& type, Loop::TimePoint begun) {
  if (type == kHistoryHint) return;
  if (phase_ == Phase::settling && std::exchange(awaitsWatcher_, false)) {
    settled_ = loop_.now() + kMaxSettleTime;
  }
  if (phase_ == Phase::settling && loop_.now() < settled_) {
    enter(Phase::settling, kSettleTime, [this] { press(); });
  } else if (phase_ == Phase::pasting && begun >= pressed_) {
    endText();
  } else if (phase_ == Phase::quiet && loop_.now() < lastTime_ + kMaxQuietTime) {
    enter(Phase::quiet, kQuietTime, [this] { endQuiet(); });
  }
}

void PasteQueue::press() {
  if (!isClipboardThere()) return;
  if (ways_.isLocked()) return refuse("the screen is locked");
  pressed_ = loop_.now();
  if (clipboard_->seesReads()) {
    enter(Phase::pasting, kPasteTimeout, [this] { refuse(kNobodyRead); });
  } else {
    enter(Phase::pasting, kUnseenPasteTime, [this] { endText(); });
  }
  ways_.pressPasteKey();
}

void PasteQueue::endText() {
  enter(Phase::quiet, kQuietTime, [this] { endQuiet(); });
  const Text done = std::exchange(texts_.front(), {});
  texts_.pop_front();
  lastText_ = done.text;
  lastWindow_ = window_.value_or("");
  lastTime_ = loop_.now();
  done.onEnd();
}

void PasteQueue::endQuiet() {
  phase_ = Phase::idle;
  texts_.empty() || !isOpen_ ? putBack() : begin();
}

/// Unless something else was copied meanwhile.
void PasteQueue::putBack() {
  ++*number_;
  const auto before = std::exchange(before_, std::nullopt);
  if (!before || clipboard_ == nullptr || ways_.clipboard() != clipboard_) return;
  if (!clipboard_->seesReads() || !clipboard_->holdsOffer()) return;
  clipboard_->offer(*before, nullptr, nullptr);
}

/// Nothing that was begun is continued.
void PasteQueue::stop() {
  ++*number_;
  timer_.reset();
  phase_ = Phase::idle;
}

/// The text is copied now, so what was there is not put back.
void PasteQueue::refuse(const std::string& why) {
  stop();
  before_.reset();
  const Text refused = std::exchange(texts_.front(), {});
  texts_.pop_front();
  lastText_.clear();
  ways_.onRefused(refused.text, why);
  refused.onEnd();
  begin();
}

void PasteQueue::close(const std::string& why) {
  isOpen_ = false;
  if (phase_ == Phase::quiet) putBack();
  stop();
  if (!texts_.empty()) before_.reset();
  for (auto texts = std::exchange(texts_, {}); !texts.empty(); texts.pop_front()) {
    ways_.onRefused(texts.front().text, why);
    texts.front().onEnd();
  }
}

}  // namespace voxtrel::quillback
