#include "quillback/app/SlowModelAdvice.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "common/settings/ConfigManager.h"
#include "quillback/model/Files.h"
#include "quillback/model/ModelStore.h"
#include "quillback/recognition/Whisper.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFoundName = "advice";
constexpr const char* kShownName = "advice-shown";

/// Beside the folder of all weights.
fs::path adviceFolder(const std::string& home) {
  const fs::path weights = ConfigManager(home).weightsFolder(std::string(kWindowModel));
  return weights.parent_path().parent_path();
}

}  // namespace

SlowModelAdvice::SlowModelAdvice(Loop& loop, Output& output, std::string home)
    : loop_(loop), output_(output), home_(std::move(home)), notifier_(loop, output) {}

void SlowModelAdvice::giveIfNeeded(const EngineSettings& settings) {
  if (!isWhisperBuiltIn() || settings.chosenModel() != kWindowModel) return;
  std::error_code error;
  if (!settings.engineModel.empty() || fs::exists(adviceFolder(home_) / kShownName, error)) return;
  if (!inspectStore(home_, settings.model)) return;
  measuring_ = ChildRun::start({"/proc/self/exe", "advise"}, "", loop_,
                               [this](int exitStatus) { tell(exitStatus); });
}

void SlowModelAdvice::tell(int exitStatus) {
  constexpr std::size_t kMaxBytes = 1000;
  const fs::path folder = adviceFolder(home_);
  const fs::path found = folder / kFoundName;
  const std::string advice =
      exitStatus == 0 ? readSmallFile(found, kMaxBytes).value_or("") : std::string();
  // Told every time is worse than never told.
  const bool isRemembered = replaceFile(folder, kShownName, advice) && removeFile(found);
  if (advice.empty() || !isRemembered) return;
  output_.print(advice);
  notifier_.notify("The speech model is slow on this machine", advice);
}

int writeSlowModelAdvice(const ModelContext& context) {
  const std::optional<double> timeFactor = measureProcessor();
  if (!timeFactor) return 1;
  const std::string advice =
      adviceAgainst(std::string(kWindowModel), context.pins, *timeFactor, context.spoken);
  return replaceFile(adviceFolder(context.home), kFoundName, advice) ? 0 : 1;
}

}  // namespace voxtrel::quillback
