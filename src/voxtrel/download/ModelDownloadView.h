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

/// What the download needs from outside. All of it must outlive every download.
struct ModelDownloadPorts {
  ApplicationBundle& bundle;
  BackgroundQueue& backgroundQueue;
  ChildProcessLauncher& childProcesses;
  MainLoop& mainLoop;
};

/// The download window without its widgets: runs the engine's setup, which downloads the model, and
/// holds what the window shows. A running setup keeps this alive until its end has been handled.
/// Thread: the main thread.  Owns: the running setup.  Borrows: the ports.
/// Fails by: DownloadState::error, shown to the user.
class ModelDownloadView : public std::enable_shared_from_this<ModelDownloadView> {
 public:
  struct DownloadState {
    enum class Kind { ready, downloading, success, error };
    Kind kind = Kind::ready;
    std::string message = {};  ///< set for an error
    bool operator==(const DownloadState&) const = default;
  };

  struct Callbacks {
    std::function<void()> onComplete;  ///< called one second after success
    std::function<void()> onSkip;      ///< the user continues without the model
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
  /// Oldest first, never trimmed. A retry clears it.
  const std::vector<std::string>& logLines() const { return logLines_; }
  double downloadProgress() const { return downloadProgress_; }      ///< at most 1
  const std::string& downloadedMB() const { return downloadedMB_; }  ///< such as "812.4 MB"
  const std::string& totalMB() const { return totalMB_; }

  // Which blocks the window shows.
  bool showsProgress() const;
  bool showsAmount() const;
  bool showsLog() const;
  bool showsError() const;
  bool showsRetry() const;
  bool skipIsEnabled() const;
  std::string amountText() const;  ///< such as "812.4 MB / 3094.1 MB"

  /// The window has come up: starts the first download.
  void appeared();
  void skip();
  void retry();

  /// `onChange` is called after any of the above has changed.
  void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

 private:
  struct Setup;

  ModelDownloadView(const ModelDownloadPorts& ports, Callbacks callbacks);

  void startDownload();
  static void launch(const std::shared_ptr<Setup>& setup, const std::string& path);
  void handleOutput(std::string_view text);
  bool handleLine(std::string_view line);
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
