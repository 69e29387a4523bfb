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

/// Downloads one pinned file into a folder as FILE.part. Resumes an earlier download.
/// Thread: one, which it blocks.  Owns: the part and its record.  Borrows: what Options refers to.
/// Fails by: a SetupFailure; what has arrived is kept unless it is wrong.
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
  };

  explicit Download(Options options);

  /// Succeeds when the part is complete, verified and on the disk.
  SetupResult run();

  std::string partPath() const { return part_.path(); }

 private:
  struct AttemptFailure {
    SetupFailure failure;
    bool isRetryable = false;
  };
  using AttemptResult = tl::expected<void, AttemptFailure>;

  SetupResult resumePart();
  SetupResult checkSpace() const;
  SetupResult fetch();
  SetupResult finish();
  SetupResult pauseBefore(int retry);
  SetupResult check(FileResult result) const;
  bool isWhole() const { return part_.sizeBytes() == options_.pin.sizeBytes; }

  AttemptResult attempt();
  AttemptResult resultOf(const HttpFailure& failure) const;
  bool onReply(const HttpReply& reply);
  bool onBody(std::span<const char> bytes);
  bool prepareFor(ReplyAction action, const HttpReply& reply);
  bool accept(FileResult result);
  bool reject(SetupFailure failure, bool isRetryable = false);
  void showProgress();

  Options options_;
  std::string host_;
  PartFile part_;
  ProgressThrottle throttle_;
  std::optional<AttemptFailure> verdict_;  ///< recorded by onReply and onBody
};

}  // namespace voxtrel::quillback
