#include "quillback/model/Download.h"

#include <algorithm>
#include <utility>

namespace voxtrel::quillback {

namespace {

/// If one try brings this much, earlier tries no longer count.
constexpr std::uint64_t kMuchBytes = 16'000'000;
constexpr int kRestOfFile = 206;
constexpr int kMaxSearches = 3;

constexpr const char* kTryLater = " Try again later, or get a newer quillback.";

}  // namespace

Download::Download(Options options)
    : options_(std::move(options)),
      host_(hostOf(options_.baseUrl)),
      part_(options_.folder, options_.pin.name),
      searchedFrom_(options_.pin.sizeBytes) {}

SetupResult Download::run() {
  return resumePart().and_then([this] { return checkSpace(); }).and_then([this] {
    return fetchAndVerify();
  });
}

SetupResult Download::check(FileResult result) const {
  return result.map_error([this](std::error_code error) {
    return fileFailure(error, options_.folder, keepsArrived());
  });
}

SetupResult Download::resumePart() {
  if (auto opened = part_.open(); !opened) return check(opened);
  const std::string& sha256 = part_.record().sha256;
  const bool isOther = !sha256.empty() && sha256 != options_.pin.sha256;
  const std::uint64_t foundBytes = part_.heldBytes();
  if (foundBytes == 0 || foundBytes > options_.pin.sizeBytes || isOther) {
    return check(part_.clear());
  }
  say("Checking the " + formatMegabytes(foundBytes) + " that an earlier setup has downloaded.");
  if (auto verified = part_.verify(options_.stop); !verified) return check(verified);
  isResumed_ = part_.heldBytes() > 0;
  if (part_.heldBytes() < foundBytes) {
    say(formatMegabytes(foundBytes - part_.heldBytes()) +
        " of it cannot be relied on and will be downloaded again.");
  }
  return {};
}

SetupResult Download::checkSpace() const {
  const std::uint64_t neededBytes = options_.pin.sizeBytes - part_.heldBytes();
  const std::optional<std::uint64_t> freeBytes = freeSpace(options_.folder);
  if (!freeBytes || *freeBytes >= neededBytes) return {};
  return tl::unexpected(SetupFailure{
      SetupExit::noSpace, "Setup failed: the download needs " + formatMegabytes(neededBytes) +
                              " more, but only " + formatMegabytes(*freeBytes) + " are free in " +
                              options_.folder + ". Make room there and run setup again."});
}

/// A resumed file that is not the expected one is searched for the place where it went wrong.
SetupResult Download::fetchAndVerify() {
  for (;;) {
    if (auto fetched = fetch(); !fetched) return fetched;
    options_.onStep("downloaded");
    if (part_.digest() == options_.pin.sha256) break;
    if (!isResumed_ || searchedFrom_ == 0 || ++searches_ > kMaxSearches) return removeWrongFile();
    if (auto back = goBack(); !back) return back;
  }
  if (auto synced = part_.sync(); !synced) return check(synced);
  options_.onStep("verified");
  return {};
}

SetupResult Download::removeWrongFile() {
  if (auto cleared = part_.clear(); !cleared) return check(cleared);
  if (auto removed = removeFile(part_.path()); !removed) return check(removed);
  return tl::unexpected(
      SetupFailure{SetupExit::wrongFile, "Setup failed: what " + host_ +
                                             " sent is not the expected " + options_.pin.name +
                                             " (its SHA-256 is wrong), "
                                             "so it was removed. Run setup again."});
}

/// Goes back to the first byte that may be wrong: of a block that has changed on the disk, else the first
/// one that was not verified, else the very first. What follows is compared with what the server sends.
SetupResult Download::goBack() {
  options_.output.print(
      "What has arrived is not the expected file; looking for its first wrong byte.");
  throttle_ = ProgressThrottle();
  if (auto verified = part_.verify(options_.stop); !verified) return check(verified);
  if (!isWhole()) return {};
  const std::uint64_t verifiedBytes = part_.verifiedBytes();
  searchedFrom_ = verifiedBytes < searchedFrom_ ? verifiedBytes : 0;
  isSearching_ = true;
  return check(part_.rewind(searchedFrom_, options_.stop));
}

SetupResult Download::fetch() {
  if (!isWhole()) {
    say((part_.heldBytes() > 0 ? "Downloading the rest of " : "Downloading ") + options_.pin.name +
        " from " + host_ + ".");
  }
  std::uint64_t bestBytes = reachedBytes();
  for (int tries = 0; !isWhole();) {
    const AttemptResult result = attempt();
    if (result) continue;
    // Everything has arrived and only the end of the connection failed: the hash decides.
    if (result.error().isRetryable && isWhole()) break;
    if (reachedBytes() >= bestBytes + kMuchBytes) tries = 0;
    bestBytes = std::max(bestBytes, reachedBytes());
    ++tries;
    if (!result.error().isRetryable || tries >= options_.limits.maxTries) {
      return tl::unexpected(result.error().failure);
    }
    if (auto paused = pauseBefore(tries, result.error().event); !paused) return paused;
  }
  isSearching_ = false;
  showProgress();
  return {};
}

SetupResult Download::pauseBefore(int retry, const std::string& event) {
  options_.output.print(
      (event.empty() ? "The download was cut off after " + formatMegabytes(part_.heldBytes())
                     : event) +
      "; trying again (" + std::to_string(retry) + " of " +
      std::to_string(options_.limits.maxTries - 1) + ").");
  if (options_.stop.waitFor(options_.limits.retryDelay * (1 << (retry - 1)))) {
    return tl::unexpected(interruption(keepsArrived()));
  }
  return {};
}

Download::AttemptResult Download::attempt() {
  verdict_.reset();
  hasBody_ = false;
  if (!isSearching_) {
    if (auto read = check(part_.catchUp(options_.stop)); !read) {
      return tl::unexpected(AttemptFailure{read.error()});
    }
  }
  const HttpRequest request{options_.baseUrl + options_.pin.path, part_.sizeBytes(),
                            ifRangeOf(part_.record().etag, part_.record().lastModified),
                            options_.certificates, options_.userAgent};
  const HttpListener listener{[this](const HttpReply& reply) { return onReply(reply); },
                              [this](std::span<const char> bytes) { return onBody(bytes); }};
  const auto result = options_.send(request, options_.limits, options_.stop, listener);
  // A body without a length that ends here is another file, or a connection was lost.
  if (result && hasBody_ && !hasLength_) isVouched_ = false;
  AttemptResult verdict = result ? resultOfEnd() : resultOf(result.error());
  if (auto settled = check(settle()); !settled) {
    return tl::unexpected(AttemptFailure{settled.error()});
  }
  return verdict;
}

/// Keeps what may be resumed: nothing of a reply that names neither length nor version.
FileResult Download::settle() {
  if (!hasBody_) return {};
  return isVouched_ || isWhole() ? part_.sealBlock() : part_.cut(bodyBegin_);
}

Download::AttemptResult Download::resultOfEnd() const {
  if (isWhole()) return {};
  const std::string what = host_ + " ended the connection before the file was whole";
  return networkFailure("Setup failed: " + what + "." + advice(), true, what);
}

Download::AttemptResult Download::resultOf(const HttpFailure& failure) const {
  switch (failure.kind) {
    case HttpFailure::Kind::rejected:
      return tl::unexpected(verdict_.value_or(AttemptFailure()));
    case HttpFailure::Kind::interrupted:
      return tl::unexpected(AttemptFailure{interruption(keepsArrived())});
    case HttpFailure::Kind::unreachable: {
      const std::string what = "here is no connection to " + host_ + " (" + failure.why + ")";
      return networkFailure("Setup failed: t" + what + "." + advice(), failure.isRetryable,
                            "T" + what);
    }
    case HttpFailure::Kind::network:
      return networkFailure("Setup failed: the download from " + host_ + " broke off (" +
                                failure.why + ")." + advice(),
                            failure.isRetryable);
    case HttpFailure::Kind::refused:
      break;
  }
  return tl::unexpected(
      AttemptFailure{{SetupExit::http, "Setup failed: " + host_ + " did not lead to the file (" +
                                           failure.why + ")." + kTryLater}});
}

Download::AttemptResult Download::networkFailure(std::string line, bool isRetryable,
                                                 std::string event) {
  AttemptFailure failure;
  failure.failure = {SetupExit::network, std::move(line)};
  failure.isRetryable = isRetryable;
  failure.event = std::move(event);
  return tl::unexpected(std::move(failure));
}

/// What the user can do about the connection.
std::string Download::advice() const {
  const bool hasSome = keepsArrived() && part_.heldBytes() > 0;
  return std::string(" Check the connection and run setup again") +
         (hasSome ? "; what has arrived is kept." : ".");
}

/// Records why the transfer ends. Returns false, for the listener to return.
bool Download::reject(SetupFailure failure, bool isRetryable, std::string event) {
  verdict_ = AttemptFailure{std::move(failure), isRetryable, std::move(event)};
  return false;
}

bool Download::accept(FileResult result) {
  return result ? true : reject(check(result).error());
}

bool Download::onReply(const HttpReply& reply) {
  const RangeRequest request{part_.sizeBytes(), options_.pin.sizeBytes, part_.record().etag};
  if (!prepareFor(judgeReply(request, reply), reply)) return false;

  replyRecord_ = {options_.pin.sha256, reply.etag, reply.lastModified};
  hasBody_ = true;
  hasLength_ = reply.status == kRestOfFile || reply.contentLength == options_.pin.sizeBytes;
  isVouched_ = hasLength_ || hasValidator(replyRecord_);
  bodyBegin_ = part_.heldBytes();
  isResumed_ = isResumed_ || bodyBegin_ > 0;
  // What continues the part is of its version, even if the reply names none.
  const bool isSilent =
      bodyBegin_ > 0 && !hasValidator(replyRecord_) && part_.record().sha256 == options_.pin.sha256;
  newRecord_ = isSilent ? part_.record() : replyRecord_;
  return part_.isComparing() || noteRecord();
}

/// Without the record the next setup would resume from whatever version the server has then.
bool Download::noteRecord() {
  const auto record = std::exchange(newRecord_, std::nullopt);
  if (!record || *record == part_.record()) return true;
  if (!accept(part_.writeRecord(*record))) return false;
  options_.onStep("recorded");
  return true;
}

/// Prepares the part for the reply's body; false if the body is not wanted.
bool Download::prepareFor(ReplyAction action, const HttpReply& reply) {
  const std::string answered = host_ + " answered with ";
  const std::string status = answered + "HTTP status " + std::to_string(reply.status);
  switch (action) {
    case ReplyAction::append:
      return true;
    case ReplyAction::restart:
      return accept(part_.rewind(0, options_.stop));
    case ReplyAction::refetch:
      return refetch();
    case ReplyAction::retry:
      return reject({SetupExit::http, "Setup failed: " + status +
                                          ". Run setup again later; what has arrived is kept."},
                    true, status);
    case ReplyAction::wrongFile:
      return reject({SetupExit::wrongFile,
                     "Setup failed: " + host_ + " offers " + options_.pin.name + " with " +
                         std::to_string(reply.contentLength.value_or(0)) + " bytes instead of " +
                         std::to_string(options_.pin.sizeBytes) + "." + kTryLater});
    case ReplyAction::webPage:
      return reject({SetupExit::http,
                     "Setup failed: " + answered + "a web page instead of " + options_.pin.name +
                         "; perhaps a proxy or the network's login page did." + advice()});
    case ReplyAction::refuse:
      break;
  }
  return reject({SetupExit::http,
                 "Setup failed: " + status + " instead of " + options_.pin.name + "." + kTryLater});
}

bool Download::refetch() {
  const std::string event = host_ + " sends other parts of the file than it is asked for";
  options_.output.print("The server's answer does not fit what was asked; starting again.");
  if (!accept(part_.rewind(0, options_.stop))) return false;
  isSearching_ = true;
  return reject({SetupExit::http, "Setup failed: " + event + ". Try again later."}, true, event);
}

bool Download::onBody(std::span<const char> bytes) {
  if (bytes.size() > options_.pin.sizeBytes - part_.sizeBytes()) return rejectExcess();
  if (part_.isComparing() && !compare(bytes)) return false;
  if (!accept(part_.append(bytes))) return false;
  if (!part_.isComparing() && !noteRecord()) return false;
  if (isVouched_ && part_.unsealedBytes() >= PartFile::kBlockBytes && !accept(part_.sealBlock())) {
    return false;
  }
  showProgress();
  return true;
}

/// False if the bytes differ from those that are held and must not replace them.
bool Download::compare(std::span<const char> bytes) {
  const auto fits = part_.fits(bytes);
  if (!fits) return accept(tl::unexpected(fits.error()));
  if (*fits) return true;
  if (hasLength_) {
    newRecord_ = replyRecord_;
    options_.output.print(isSearching_
                              ? "The server's file differs from what has arrived after " +
                                    formatMegabytes(part_.sizeBytes()) + "; the rest is replaced."
                              : "The server sends the file from its beginning; starting again.");
    return true;
  }
  return reject(
      {SetupExit::http,
       "Setup failed: " + host_ + " sends something else than " + options_.pin.name +
           ", of unknown length; what has arrived is kept. Run setup again later. If that "
           "does not help, remove " +
           part_.path() + "."});
}

bool Download::rejectExcess() {
  hasBody_ = false;
  if (!accept(part_.cut(bodyBegin_))) return false;
  return reject({SetupExit::wrongFile, "Setup failed: " + host_ +
                                           " sends more than the expected file, so " +
                                           (bodyBegin_ > 0 ? "what it sent" : "the download") +
                                           " was removed." + kTryLater});
}

void Download::say(const std::string& line) const {
  if (!options_.isQuiet) options_.output.print(line);
}

void Download::showProgress() {
  if (options_.isQuiet || !throttle_.isDue(std::chrono::steady_clock::now(), isWhole())) return;
  options_.output.print(formatProgress(reachedBytes(), options_.pin.sizeBytes));
  options_.onStep("progress");
}

}  // namespace voxtrel::quillback
