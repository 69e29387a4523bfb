#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace voxtrel {

class ApplicationBundle;
class BackgroundQueue;
class ChildProcessLauncher;
class MainLoop;

/// What the download needs from outside; all of it must outlive every download.
struct ModelDownloadPorts {
  ApplicationBundle& bundle;
  BackgroundQueue& backgroundQueue;
  ChildProcessLauncher& childProcesses;
  MainLoop& mainLoop;
};

/// The download window without its widgets: runs the engine's setup mode, which fetches the model,
/// and says what the window shows meanwhile.
/// Thread: the main thread.  Owns: the running setup.  Borrows: the ports.
/// A running setup keeps this alive until it has ended and been reported, whatever became of the
/// window.
/// Fails by: DownloadState::error, shown to the user.
class ModelDownloadView : public std::enable_shared_from_this<ModelDownloadView> {
 public:
  struct DownloadState {
    enum class Kind { ready, downloading, success, error };
    Kind kind = Kind::ready;
    std::string message = {};  ///< of an error
    bool operator==(const DownloadState&) const = default;
  };

  struct Callbacks {
    std::function<void()> onComplete;  ///< one second after a download that succeeded
    std::function<void()> onSkip;      ///< the user goes on without the model
  };

  static constexpr std::string_view kTitle = "Voxtrel — Model Setup";
  static constexpr std::string_view kDescription = "Downloading Whisper Large v3 (~3 GB)";
  static constexpr std::string_view kErrorHint = "Check your internet connection and try again.";
  static constexpr std::string_view kSkipTitle = "Skip (won't work without model)";
  static constexpr std::string_view kRetryTitle = "Retry";

  /// Layout in points.
  static constexpr int kWidthPt = 420;
  static constexpr int kHeightPt = 320;
  static constexpr int kPaddingPt = 24;
  static constexpr int kSpacingPt = 16;
  static constexpr int kProgressSpacingPt = 8;
  static constexpr int kProgressSidePaddingPt = 8;
  static constexpr int kLogHeightPt = 80;
  static constexpr int kLogLineSpacingPt = 2;
  static constexpr int kLogCornerRadiusPt = 4;

  /// `initialModel` has no effect: the engine's setup always fetches the same model.
  static std::shared_ptr<ModelDownloadView> create(const ModelDownloadPorts& ports,
                                                   const std::optional<std::string>& initialModel,
                                                   Callbacks callbacks);

  const DownloadState& downloadState() const { return downloadState_; }
  /// Oldest first, never trimmed; only grows but for a restart, which begins it anew.
  const std::vector<std::string>& logLines() const { return logLines_; }
  double downloadProgress() const { return downloadProgress_; }      ///< at most 1
  const std::string& downloadedMB() const { return downloadedMB_; }  ///< such as "812.4 MB"
  const std::string& totalMB() const { return totalMB_; }

  // Which of the window's blocks are present.
  bool showsProgress() const;
  bool showsAmount() const;
  bool showsLog() const;
  bool showsError() const;
  bool showsRetry() const;
  bool skipIsEnabled() const;
  std::string amountText() const;  ///< such as "812.4 MB / 3094.1 MB"

  /// The window has come up: begins the download if none has begun yet.
  void appeared();
  void skip();
  void retry();

  /// Called after anything above has changed.
  void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

 private:
  struct Setup;

  ModelDownloadView(const ModelDownloadPorts& ports, Callbacks callbacks);

  void startDownload();
  static void launch(const std::shared_ptr<Setup>& setup, const std::string& path);
  void takeOutput(std::string_view text);
  bool takePiece(std::string_view piece);
  void handleExit(int status);
  void fail(std::string message);
  void changed() const;

  const ModelDownloadPorts ports_;
  const Callbacks callbacks_;
  DownloadState downloadState_;
  std::vector<std::string> logLines_;
  double downloadProgress_ = 0.0;
  std::string downloadedMB_;
  std::string totalMB_;
  std::function<void()> onChange_;
};

}  // namespace voxtrel
