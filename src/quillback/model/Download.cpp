#include "quillback/model/Download.h"

#include <cerrno>

#include "quillback/model/Files.h"

namespace voxtrel::quillback {

namespace {

/// This much in one try, and the tries before it no longer count.
constexpr std::uint64_t kMuchBytes = 16'000'000;

}  // namespace

Download::Download(Surroundings around)
    : around_(std::move(around)),
      host_(hostOf(around_.baseUrl)),
      partPath_(around_.folder + "/" + around_.pin.fileName + ".part") {}

std::optional<SetupFailure> Download::run() {
  if (auto failure = takeUpPart()) return failure;
  if (auto failure = findSpace()) return failure;
  if (auto failure = fetch()) return failure;
  return finish();
}

std::optional<SetupFailure> Download::takeUpPart() {
  if (const int error = part_.open(partPath_)) return writeFailure(error, around_.folder);
  const std::optional<std::string> text = readSmallFile(recordPath(), kMaxPartRecordBytes + 1);
  const std::optional<PartRecord> record = text ? parsePartRecord(*text) : std::nullopt;
  const bool isForeign = record && record->sha256 != around_.pin.sha256;
  if (part_.sizeBytes() == 0 || part_.sizeBytes() > around_.pin.sizeBytes || isForeign) {
    return discard();
  }
  if (record) record_ = *record;
  around_.output.print("Checking the " + formatMegabytes(part_.sizeBytes()) +
                       " that an earlier setup has downloaded.");
  const int error = part_.hashAll(around_.stop);
  if (error == ECANCELED) return interruption();
  if (error != 0) return writeFailure(error, around_.folder);
  return std::nullopt;
}

std::optional<SetupFailure> Download::findSpace() const {
  const std::uint64_t neededBytes = around_.pin.sizeBytes - part_.sizeBytes();
  const std::optional<std::uint64_t> freeBytes = freeSpace(around_.folder);
  if (!freeBytes || *freeBytes >= neededBytes) return std::nullopt;
  return SetupFailure{SetupExit::noSpace,
                      "Setup failed: the download needs " + formatMegabytes(neededBytes) +
                          " more, but only " + formatMegabytes(*freeBytes) + " are free in " +
                          around_.folder + ". Make room there and run setup again."};
}

std::optional<SetupFailure> Download::fetch() {
  if (part_.sizeBytes() < around_.pin.sizeBytes) {
    around_.output.print((part_.sizeBytes() > 0 ? "Downloading the rest of " : "Downloading ") +
                         around_.pin.fileName + " from " + host_ + ".");
  }
  for (int tries = 0; part_.sizeBytes() < around_.pin.sizeBytes;) {
    const std::uint64_t before = part_.sizeBytes();
    const Attempt result = attempt();
    if (!result.failure) continue;
    // All of it is there, and only the connection's end went wrong: the hash decides.
    if (result.mayPass && part_.sizeBytes() == around_.pin.sizeBytes) break;
    if (part_.sizeBytes() > before && part_.sizeBytes() - before >= kMuchBytes) tries = 0;
    ++tries;
    if (!result.mayPass || tries >= around_.limits.tries) return result.failure;
    if (auto interrupted = pauseBefore(tries)) return interrupted;
  }
  showProgress();
  return std::nullopt;
}

std::optional<SetupFailure> Download::pauseBefore(int nextTry) {
  around_.output.print("The download was cut off after " + formatMegabytes(part_.sizeBytes()) +
                       "; trying again (" + std::to_string(nextTry) + " of " +
                       std::to_string(around_.limits.tries - 1) + ").");
  const bool isStopped = around_.stop.waitFor(around_.limits.beforeRetry * (1 << (nextTry - 1)));
  return isStopped ? std::optional(interruption()) : std::nullopt;
}

std::optional<SetupFailure> Download::finish() {
  around_.onStep("downloaded");
  if (part_.digest() != around_.pin.sha256) {
    if (auto failure = discard()) return failure;
    if (const int error = removeFile(partPath_)) return writeFailure(error, around_.folder);
    return SetupFailure{SetupExit::wrongFile,
                        "Setup failed: what " + host_ +
                            " sent is not the expected file (its SHA-256 is wrong), so it was "
                            "removed. Run setup again to download it anew."};
  }
  if (const int error = part_.sync()) return writeFailure(error, around_.folder);
  around_.onStep("verified");
  return std::nullopt;
}

/// Back to nothing, with nothing known of it.
std::optional<SetupFailure> Download::discard() {
  record_ = PartRecord();
  int error = part_.clear();
  if (error == 0) error = removeFile(recordPath());
  return error == 0 ? std::nullopt : std::optional(writeFailure(error, around_.folder));
}

Download::Attempt Download::attempt() {
  given_ = Attempt();
  const HttpRequest request{around_.baseUrl + around_.pin.path, part_.sizeBytes(),
                            ifRangeOf(record_.etag, record_.lastModified), around_.certificates,
                            around_.userAgent};
  const HttpListener listener{[this](const HttpReply& reply) { return onReply(reply); },
                              [this](std::span<const char> bytes) { return onBody(bytes); }};
  return resultOf(transfer(request, around_.limits, around_.stop, listener));
}

bool Download::give(SetupExit exit, const std::string& line, bool mayPass) {
  given_ = {SetupFailure{exit, line}, mayPass};
  return false;
}

bool Download::onReply(const HttpReply& reply) {
  const RangeAsk ask{part_.sizeBytes(), around_.pin.sizeBytes, record_.etag};
  const ReplyAction action = judgeReply(ask, reply);
  if (!act(action, reply)) return false;

  // Without the record the next setup would still go on, but from whatever version is there then.
  const PartRecord record{around_.pin.sha256, reply.etag, reply.lastModified};
  if (record != record_) {
    const std::string name = around_.pin.fileName + ".part.json";
    if (const int error = replaceFile(around_.folder, name, formatPartRecord(record))) {
      given_ = {writeFailure(error, around_.folder), false};
      return false;
    }
    record_ = record;
    around_.onStep("recorded");
  }
  return true;
}

/// Prepares the part for the answer's body; false: the body is not wanted.
bool Download::act(ReplyAction action, const HttpReply& reply) {
  const std::string status = host_ + " answered with HTTP status " + std::to_string(reply.status);
  switch (action) {
    case ReplyAction::append:
      return true;
    case ReplyAction::restart:
      around_.output.print("The server sends the file from its beginning; starting anew.");
      if (auto failure = discard()) return give(failure->exit, failure->line);
      return true;
    case ReplyAction::askAnew:
      around_.output.print("The server's answer does not fit what was asked; starting anew.");
      if (auto failure = discard()) return give(failure->exit, failure->line);
      return give(SetupExit::http,
                  "Setup failed: " + host_ +
                      " sends other parts of the file than it is asked for. Try again later.",
                  true);
    case ReplyAction::retry:
      return give(SetupExit::http,
                  "Setup failed: " + status + ". Run setup again later; what has arrived is kept.",
                  true);
    case ReplyAction::wrongFile:
      return give(SetupExit::wrongFile, "Setup failed: " + host_ + " offers a file of " +
                                            std::to_string(reply.contentLength.value_or(0)) +
                                            " bytes instead of " +
                                            std::to_string(around_.pin.sizeBytes) +
                                            ". Try again later, or get a newer quillback.");
    case ReplyAction::refuse:
      break;
  }
  return give(SetupExit::http, "Setup failed: " + status +
                                   " instead of the file. Try again later, or get a newer "
                                   "quillback.");
}

bool Download::onBody(std::span<const char> bytes) {
  const bool isTooMuch = bytes.size() > around_.pin.sizeBytes - part_.sizeBytes();
  if (isTooMuch) {
    if (auto failure = discard()) return give(failure->exit, failure->line);
    return give(SetupExit::wrongFile,
                "Setup failed: " + host_ +
                    " sends more than the expected file, so what had arrived was removed. Try "
                    "again later, or get a newer quillback.");
  }
  if (const int error = part_.append(bytes)) {
    const SetupFailure failure = writeFailure(error, around_.folder);
    return give(failure.exit, failure.line);
  }
  showProgress();
  return true;
}

void Download::showProgress() {
  const bool isLast = part_.sizeBytes() == around_.pin.sizeBytes;
  if (!throttle_.isDue(std::chrono::steady_clock::now(), isLast)) return;
  around_.output.print(formatProgress(part_.sizeBytes(), around_.pin.sizeBytes));
  around_.onStep("progress");
}

Download::Attempt Download::resultOf(const HttpEnd& end) {
  const std::string kept = " Check the connection and run setup again; what has arrived is kept.";
  switch (end.kind) {
    case HttpEnd::Kind::dropped:
      return given_;
    case HttpEnd::Kind::interrupted:
      return {interruption(), false};
    case HttpEnd::Kind::network:
      return {SetupFailure{SetupExit::network, "Setup failed: the download from " + host_ +
                                                   " broke off (" + end.why + ")." + kept},
              end.mayPass};
    case HttpEnd::Kind::refused:
      return {SetupFailure{SetupExit::http, "Setup failed: " + host_ +
                                                " did not lead to the file (" + end.why +
                                                "). Try again later, or get a newer quillback."},
              false};
    case HttpEnd::Kind::complete:
      break;
  }
  if (part_.sizeBytes() == around_.pin.sizeBytes) return {};
  // Without a length in the answer the end of the connection looks like the end of the file.
  return {SetupFailure{
              SetupExit::network,
              "Setup failed: " + host_ + " ended the connection before the file was whole." + kept},
          true};
}

}  // namespace voxtrel::quillback
