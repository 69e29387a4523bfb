#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "quillback/model/HttpTransfer.h"
#include "quillback/model/ModelPin.h"
#include "quillback/model/PartFile.h"
#include "quillback/model/ProgressLine.h"
#include "quillback/model/RangeRules.h"
#include "quillback/model/SetupFailure.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Downloads one pinned file into a folder as FILE.part. Resumes an earlier download. What has arrived is
/// replaced only by a reply that has the pinned length, and only from the first byte that differs.
/// Thread: one, which it blocks.  Owns: the part and its record.  Borrows: what Options refers to.
/// Fails by: a SetupFailure; what has arrived is kept unless it is wrong or no length and no version
/// tell what it is.
class Download {
 public:
  struct Options {
    const FilePin& pin;
    std::string folder;   ///< exists and is locked
    std::string baseUrl;  ///< without a slash at its end
    std::string certificates;
    std::string userAgent;
    const TransferLimits& limits;
    const StopSignals& stop;
    Output& output;
    std::function<void(std::string_view step)> onStep;
    bool isQuiet = false;  ///< prints problems only
    std::function<decltype(transfer)> send = transfer;
  };

  explicit Download(Options options);

  /// Succeeds when the part is complete, verified and on the disk.
  SetupResult run();

  std::string partPath() const { return part_.path(); }

 private:
  struct AttemptFailure {
    SetupFailure failure;
    bool isRetryable = false;
    std::string event = {};  ///< what happened, for the line before a retry; empty: it was cut off
  };
  using AttemptResult = tl::expected<void, AttemptFailure>;

  SetupResult resumePart();
  SetupResult checkSpace() const;
  SetupResult fetchAndVerify();
  SetupResult fetch();
  SetupResult goBack();
  SetupResult removeWrongFile();
  SetupResult pauseBefore(int retry, const std::string& event);
  SetupResult check(FileResult result) const;
  bool isWhole() const { return part_.sizeBytes() == options_.pin.sizeBytes; }
  bool keepsArrived() const { return !hasBody_ || isVouched_; }
  std::uint64_t reachedBytes() const {
    return isSearching_ ? part_.sizeBytes() : part_.heldBytes();
  }

  AttemptResult attempt();
  AttemptResult resultOfEnd() const;
  AttemptResult resultOf(const HttpFailure& failure) const;
  static AttemptResult networkFailure(std::string line, bool isRetryable, std::string event = {});
  FileResult settle();
  std::string advice() const;
  bool onReply(const HttpReply& reply);
  bool onBody(std::span<const char> bytes);
  bool prepareFor(ReplyAction action, const HttpReply& reply);
  bool refetch();
  bool compare(std::span<const char> bytes);
  bool noteRecord();
  bool accept(FileResult result);
  bool reject(SetupFailure failure, bool isRetryable = false, std::string event = {});
  bool rejectExcess();
  void say(const std::string& line) const;
  void showProgress();

  Options options_;
  std::string host_;
  PartFile part_;
  ProgressThrottle throttle_;
  bool isResumed_ = false;      ///< the part comes from more than one reply
  std::uint64_t searchedFrom_;  ///< where the last search for a wrong byte began
  int searches_ = 0;
  bool isSearching_ = false;  ///< what is held is not trusted until the server has sent it again

  // The running attempt.
  bool hasBody_ = false;    ///< there is a reply whose body is wanted
  bool hasLength_ = false;  ///< the body is exactly what the part lacks
  bool isVouched_ = false;  ///< the reply names length or version, so that its bytes may be resumed
  std::uint64_t bodyBegin_ = 0;  ///< how much was held before
  PartRecord replyRecord_;
  std::optional<PartRecord> newRecord_;    ///< to be written once nothing is compared any more
  std::optional<AttemptFailure> verdict_;  ///< recorded by onReply and onBody
};

}  // namespace voxtrel::quillback
