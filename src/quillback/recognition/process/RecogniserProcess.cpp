#include "quillback/recognition/process/RecogniserProcess.h"

#include <algorithm>
#include <utility>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// While an answer is awaited, how often to check whether it is still wanted.
constexpr milliseconds kWaitStep{20};
/// While the model is loaded, how often to check the time.
constexpr milliseconds kLoadStep{1000};
/// Samples in one message, half a second.
constexpr std::size_t kMessageSamples = kSampleRateHz / 2;
/// Samples that the fallback gets at once, 0.1 s.
constexpr std::size_t kFallbackSamples = kSampleRateHz / 10;

milliseconds lengthOf(std::size_t samples) {
  return milliseconds(samples * 1000 / kSampleRateHz);
}

}  // namespace

RecogniserProcess::RecogniserProcess(std::vector<std::string> command, MakeBackend makeFallback,
                                     RecogniserLimits limits, int variants)
    : command_(std::move(command)),
      makeFallback_(std::move(makeFallback)),
      limits_(limits),
      variants_(variants) {}

LoadReport RecogniserProcess::load() {
  take_.mayRestart = false;
  startChild();
  while (!loaded_ && !usesFallback_) step(kLoadStep);
  if (loaded_) return *loaded_;
  return {fallback_ != nullptr, std::exchange(lines_, {})};
}

void RecogniserProcess::begin(const std::atomic<bool>& isDropped) {
  isDropped_ = &isDropped;
  take_ = Take();
  if (fallback_) return fallback_->begin(isDropped);
  if (!usesFallback_ && (!child_ || child_->hasEnded())) startChild();
}

void RecogniserProcess::feed(std::span<const std::int16_t> samples) {
  if (usesFallback_) return feedFallback(samples);
  take_.samples.insert(take_.samples.end(), samples.begin(), samples.end());
  step(milliseconds(0));
}

Transcription RecogniserProcess::finish() {
  take_.isFinished = true;
  setAnswerDeadline();
  while (!usesFallback_ && isWanted()) {
    auto result = step(kWaitStep);
    if (!result) continue;
    leaveTake();
    return withLines(std::move(*result));
  }
  if (!isWanted()) return {};
  return withLines(fallback_ ? fallback_->finish() : Transcription());
}

void RecogniserProcess::drop() {
  const bool isWithChild = child_ && take_.isBegun;
  leaveTake();
  if (fallback_) return fallback_->drop();
  if (!isWithChild) return;
  // The signal first: it must not come after the message that it belongs to.
  child_->interrupt();
  child_->queue({Message::Kind::drop, {}});
  const auto end = steady_clock::now() + limits_.drop;
  for (auto left = limits_.drop; left > milliseconds(0);
       left = std::chrono::ceil<milliseconds>(end - steady_clock::now())) {
    const auto message = child_->receive(left);
    if (!message) break;
    if (*message && (*message)->kind == Message::Kind::dropped) return;
  }
  startChild();
}

void RecogniserProcess::rest() {
  child_.reset();
  loaded_.reset();
}

/// The take has no reader from now on.
void RecogniserProcess::leaveTake() {
  take_ = Take();
  isDropped_ = nullptr;
  if (loaded_) deadline_.reset();
}

/// Starts a child, in place of any other, which will get the whole take. Does not wait for the
/// model.
void RecogniserProcess::startChild() {
  rest();  // first, because two models may be too much for the memory
  take_.sent = 0;
  take_.isBegun = false;
  take_.isFinishSent = false;
  deadline_ = steady_clock::now() + limits_.load;
  std::vector<std::string> words = command_;
  if (variants_ > 1) words.push_back(std::to_string(variant_));
  auto child = RecogniserChild::start(words);
  if (!child) return useFallback(child.error());
  child_ = std::move(*child);
}

/// Sends what the child takes, and handles one of its messages if one comes within the limit.
std::optional<Transcription> RecogniserProcess::step(milliseconds limit) {
  sendTake();
  const auto message = child_->receive(limit);
  if (!message) {
    replaceChild(message.error());
  } else if (*message) {
    return handle(**message);
  } else if (isLate()) {
    // Another child would take as long.
    useFallback(loaded_ ? "gave no answer in time" : "did not load its model in time");
  }
  return {};
}

/// A child that loads its model has nothing yet, so there is nothing to drop then.
void RecogniserProcess::sendTake() {
  while (loaded_ && child_->flush()) {
    const auto message = nextToSend();
    if (!message) return;
    child_->queue(*message);
  }
}

std::optional<Message> RecogniserProcess::nextToSend() {
  if (!std::exchange(take_.isBegun, true)) return Message{Message::Kind::begin, {}};
  const auto unsent = std::span<const std::int16_t>(take_.samples).subspan(take_.sent);
  if (!unsent.empty()) {
    const auto piece = unsent.first(std::min(unsent.size(), kMessageSamples));
    take_.sent += piece.size();
    return samplesMessage(piece);
  }
  if (!take_.isFinished || std::exchange(take_.isFinishSent, true)) return {};
  return Message{Message::Kind::finish, {}};
}

std::optional<Transcription> RecogniserProcess::handle(const Message& message) {
  if (!loaded_) {
    handleLoaded(message);
    return {};
  }
  auto result = take_.isFinishSent ? readResult(message) : std::nullopt;
  if (!result) replaceChild("sent a message that was not expected");
  return result;
}

void RecogniserProcess::handleLoaded(const Message& message) {
  auto report = readLoaded(message);
  if (!report) return replaceChild("sent a message that was not expected");
  if (report->isUsable) {
    loaded_ = std::move(report);
    return setAnswerDeadline();
  }
  std::string problem = "cannot load its model";
  for (const std::string& line : report->lines) problem += ": " + line;
  useFallback(problem);
}

void RecogniserProcess::setAnswerDeadline() {
  if (!loaded_) return;
  deadline_.reset();
  if (!take_.isFinished) return;
  const milliseconds bySound = limits_.answerPerSound * lengthOf(take_.samples.size());
  deadline_ = steady_clock::now() + std::max(limits_.answer, bySound);
}

void RecogniserProcess::replaceChild(const std::string& problem) {
  if (child_->hitIllegalInstruction() && variant_ + 1 < variants_) {
    ++variant_;
    return startChild();
  }
  if (!std::exchange(take_.mayRestart, false)) return useFallback(problem);
  startChild();
}

/// `problem` ends a sentence that begins with "The recogniser".
void RecogniserProcess::useFallback(const std::string& problem) {
  rest();
  usesFallback_ = true;
  std::string line = "[quillback] ERROR The recogniser " + problem + ".";
  if (makeFallback_) line += " From now on the embedded English recogniser is used.";
  lines_.push_back(std::move(line));
  if (!makeFallback_) return;
  fallback_ = makeFallback_();
  const LoadReport report = fallback_->load();
  lines_.insert(lines_.end(), report.lines.begin(), report.lines.end());
  if (!report.isUsable) fallback_.reset();
  if (!fallback_ || isDropped_ == nullptr) return;
  fallback_->begin(*isDropped_);
  feedFallback(std::exchange(take_.samples, {}));
}

void RecogniserProcess::feedFallback(std::span<const std::int16_t> samples) {
  while (fallback_ && isWanted() && !samples.empty()) {
    const std::size_t count = std::min(samples.size(), kFallbackSamples);
    fallback_->feed(samples.first(count));
    samples = samples.subspan(count);
  }
}

Transcription RecogniserProcess::withLines(Transcription result) {
  result.lines.insert(result.lines.begin(), lines_.begin(), lines_.end());
  lines_.clear();
  return result;
}

}  // namespace voxtrel::quillback
