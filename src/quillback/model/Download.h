#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "quillback/model/HttpTransfer.h"
#include "quillback/model/ModelPin.h"
#include "quillback/model/PartFile.h"
#include "quillback/model/PartRecord.h"
#include "quillback/model/ProgressLine.h"
#include "quillback/model/RangeRules.h"
#include "quillback/model/SetupExit.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Brings one pinned file into a folder as FILE.part, and goes on where an earlier download ended.
/// Thread: one, which it blocks.  Owns: the part and its record, FILE.part.json.
/// Borrows: all of Surroundings.
class Download {
 public:
  struct Surroundings {
    const ModelPin& pin;
    std::string folder;  ///< must be there, and locked
    std::string baseUrl;
    std::string certificates;
    std::string userAgent;
    const TransferLimits& limits;
    const StopSignals& stop;
    Output& output;
    std::function<void(std::string_view step)> onStep;
  };

  explicit Download(Surroundings around);

  /// Returns nothing once the part is whole, verified and on the disk.
  std::optional<SetupFailure> run();

  std::string partPath() const { return partPath_; }

 private:
  std::string recordPath() const { return partPath_ + ".json"; }
  /// What one request came to.
  struct Attempt {
    std::optional<SetupFailure> failure;
    bool mayPass = false;
  };

  std::optional<SetupFailure> takeUpPart();
  std::optional<SetupFailure> findSpace() const;
  std::optional<SetupFailure> fetch();
  std::optional<SetupFailure> finish();
  std::optional<SetupFailure> discard();
  std::optional<SetupFailure> pauseBefore(int nextTry);

  Attempt attempt();
  bool onReply(const HttpReply& reply);
  bool onBody(std::span<const char> bytes);
  bool act(ReplyAction action, const HttpReply& reply);
  bool give(SetupExit exit, const std::string& line, bool mayPass = false);
  void showProgress();
  Attempt resultOf(const HttpEnd& end);

  Surroundings around_;
  std::string host_;
  std::string partPath_;
  PartFile part_;
  PartRecord record_;
  ProgressThrottle throttle_;
  Attempt given_;  ///< by what was thought of the answer, while it comes
};

}  // namespace voxtrel::quillback
