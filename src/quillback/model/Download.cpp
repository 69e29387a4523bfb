#include "quillback/model/Download.h"

namespace voxtrel::quillback {

namespace {

/// If one try brings this much, earlier tries no longer count.
constexpr std::uint64_t kMuchBytes = 16'000'000;

constexpr const char* kTryLater = " Try again later, or get a newer quillback.";
constexpr const char* kKept =
    " Check the connection and run setup again; what has arrived is kept.";

}  // namespace

Download::Download(Options options)
    : options_(std::move(options)),
      host_(hostOf(options_.baseUrl)),
      part_(options_.folder, options_.pin.name) {}

SetupResult Download::run() {
  return resumePart()
      .and_then([this] { return checkSpace(); })
      .and_then([this] { return fetch(); })
      .and_then([this] { return finish(); });
}

SetupResult Download::check(FileResult result) const {
  return result.map_error(
      [this](std::error_code error) { return fileFailure(error, options_.folder); });
}

SetupResult Download::resumePart() {
  if (auto opened = part_.open(); !opened) return check(opened);
  const std::string& sha256 = part_.record().sha256;
  const bool isOther = !sha256.empty() && sha256 != options_.pin.sha256;
  if (part_.sizeBytes() == 0 || part_.sizeBytes() > options_.pin.sizeBytes || isOther) {
    return check(part_.clear());
  }
  if (!options_.isQuiet) {
    options_.output.print("Checking the " + formatMegabytes(part_.sizeBytes()) +
                          " that an earlier setup has downloaded.");
  }
  return check(part_.hashAll(options_.stop));
}

SetupResult Download::checkSpace() const {
  const std::uint64_t neededBytes = options_.pin.sizeBytes - part_.sizeBytes();
  const std::optional<std::uint64_t> freeBytes = freeSpace(options_.folder);
  if (!freeBytes || *freeBytes >= neededBytes) return {};
  return tl::unexpected(SetupFailure{
      SetupExit::noSpace, "Setup failed: the download needs " + formatMegabytes(neededBytes) +
                              " more, but only " + formatMegabytes(*freeBytes) + " are free in " +
                              options_.folder + ". Make room there and run setup again."});
}

SetupResult Download::fetch() {
  if (!isWhole() && !options_.isQuiet) {
    options_.output.print((part_.sizeBytes() > 0 ? "Downloading the rest of " : "Downloading ") +
                          options_.pin.name + " from " + host_ + ".");
  }
  for (int tries = 0; !isWhole();) {
    const std::uint64_t before = part_.sizeBytes();
    const AttemptResult result = attempt();
    if (result) continue;
    // Everything has arrived and only the end of the connection failed: the hash decides.
    if (result.error().isRetryable && isWhole()) break;
    if (part_.sizeBytes() > before && part_.sizeBytes() - before >= kMuchBytes) tries = 0;
    ++tries;
    if (!result.error().isRetryable || tries >= options_.limits.maxTries) {
      return tl::unexpected(result.error().failure);
    }
    if (auto paused = pauseBefore(tries); !paused) return paused;
  }
  showProgress();
  return {};
}

SetupResult Download::pauseBefore(int retry) {
  options_.output.print("The download was cut off after " + formatMegabytes(part_.sizeBytes()) +
                        "; trying again (" + std::to_string(retry) + " of " +
                        std::to_string(options_.limits.maxTries - 1) + ").");
  if (options_.stop.waitFor(options_.limits.retryDelay * (1 << (retry - 1)))) {
    return tl::unexpected(interruption());
  }
  return {};
}

SetupResult Download::finish() {
  options_.onStep("downloaded");
  if (part_.digest() != options_.pin.sha256) {
    if (auto cleared = part_.clear(); !cleared) return check(cleared);
    if (auto removed = removeFile(part_.path()); !removed) return check(removed);
    return tl::unexpected(
        SetupFailure{SetupExit::wrongFile, "Setup failed: what " + host_ +
                                               " sent is not the expected " + options_.pin.name +
                                               " (its SHA-256 is wrong), "
                                               "so it was removed. Run setup again."});
  }
  if (auto synced = part_.sync(); !synced) return check(synced);
  options_.onStep("verified");
  return {};
}

Download::AttemptResult Download::attempt() {
  verdict_.reset();
  const HttpRequest request{options_.baseUrl + options_.pin.path, part_.sizeBytes(),
                            ifRangeOf(part_.record().etag, part_.record().lastModified),
                            options_.certificates, options_.userAgent};
  const HttpListener listener{[this](const HttpReply& reply) { return onReply(reply); },
                              [this](std::span<const char> bytes) { return onBody(bytes); }};
  const auto result = transfer(request, options_.limits, options_.stop, listener);
  if (!result) return resultOf(result.error());
  if (isWhole()) return {};
  // Without a length in the reply, a lost connection looks like the end of the file.
  return tl::unexpected(AttemptFailure{
      {SetupExit::network,
       "Setup failed: " + host_ + " ended the connection before the file was whole." + kKept},
      true});
}

Download::AttemptResult Download::resultOf(const HttpFailure& failure) const {
  switch (failure.kind) {
    case HttpFailure::Kind::rejected:
      return tl::unexpected(verdict_.value_or(AttemptFailure()));
    case HttpFailure::Kind::interrupted:
      return tl::unexpected(AttemptFailure{interruption(), false});
    case HttpFailure::Kind::network:
      return tl::unexpected(
          AttemptFailure{{SetupExit::network, "Setup failed: the download from " + host_ +
                                                  " broke off (" + failure.why + ")." + kKept},
                         failure.isRetryable});
    case HttpFailure::Kind::refused:
      break;
  }
  return tl::unexpected(AttemptFailure{
      {SetupExit::http,
       "Setup failed: " + host_ + " did not lead to the file (" + failure.why + ")." + kTryLater},
      false});
}

/// Records why the transfer ends. Returns false, for the listener to return.
bool Download::reject(SetupFailure failure, bool isRetryable) {
  verdict_ = AttemptFailure{std::move(failure), isRetryable};
  return false;
}

bool Download::accept(FileResult result) {
  return result ? true : reject(fileFailure(result.error(), options_.folder));
}

bool Download::onReply(const HttpReply& reply) {
  const RangeRequest request{part_.sizeBytes(), options_.pin.sizeBytes, part_.record().etag};
  if (!prepareFor(judgeReply(request, reply), reply)) return false;

  // Without the record the next setup would resume from whatever version the server has then.
  const PartRecord record{options_.pin.sha256, reply.etag, reply.lastModified};
  if (record == part_.record()) return true;
  if (!accept(part_.writeRecord(record))) return false;
  options_.onStep("recorded");
  return true;
}

/// Prepares the part for the reply's body; false if the body is not wanted.
bool Download::prepareFor(ReplyAction action, const HttpReply& reply) {
  const std::string status = host_ + " answered with HTTP status " + std::to_string(reply.status);
  switch (action) {
    case ReplyAction::append:
      return true;
    case ReplyAction::restart:
      options_.output.print("The server sends the file from its beginning; starting anew.");
      return accept(part_.clear());
    case ReplyAction::refetch:
      options_.output.print("The server's answer does not fit what was asked; starting anew.");
      if (!accept(part_.clear())) return false;
      return reject({SetupExit::http,
                     "Setup failed: " + host_ +
                         " sends other parts of the file than it is asked for. Try again later."},
                    true);
    case ReplyAction::retry:
      return reject({SetupExit::http, "Setup failed: " + status +
                                          ". Run setup again later; what has arrived is kept."},
                    true);
    case ReplyAction::wrongFile:
      return reject({SetupExit::wrongFile,
                     "Setup failed: " + host_ + " offers " + options_.pin.name + " with " +
                         std::to_string(reply.contentLength.value_or(0)) + " bytes instead of " +
                         std::to_string(options_.pin.sizeBytes) + "." + kTryLater});
    case ReplyAction::refuse:
      break;
  }
  return reject({SetupExit::http,
                 "Setup failed: " + status + " instead of " + options_.pin.name + "." + kTryLater});
}

bool Download::onBody(std::span<const char> bytes) {
  if (bytes.size() > options_.pin.sizeBytes - part_.sizeBytes()) {
    if (!accept(part_.clear())) return false;
    return reject({SetupExit::wrongFile,
                   "Setup failed: " + host_ +
                       " sends more than the expected file, so the download was removed." +
                       kTryLater});
  }
  if (!accept(part_.append(bytes))) return false;
  showProgress();
  return true;
}

void Download::showProgress() {
  if (options_.isQuiet || !throttle_.isDue(std::chrono::steady_clock::now(), isWhole())) return;
  options_.output.print(formatProgress(part_.sizeBytes(), options_.pin.sizeBytes));
  options_.onStep("progress");
}

}  // namespace voxtrel::quillback
