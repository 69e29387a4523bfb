#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "common/base/Fatal.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/supervisor/AppState.h"
#include "voxtrel/supervisor/LineProtocol.h"

namespace voxtrel {

class ApplicationBundle;
class BackgroundQueue;
class ChildProcess;
class ChildProcessLauncher;
class Clock;
class MainLoop;
class Notifications;

/// What the supervisor needs from outside; all of it must outlive the supervisor.
struct ProcessManagerPorts {
  ApplicationBundle& bundle;
  BackgroundQueue& backgroundQueue;
  ChildProcessLauncher& childProcesses;
  Clock& clock;
  Log& log;
  MainLoop& mainLoop;
  Notifications& notifications;
};

/// What the user can be told of the engine, as of one moment.
struct EngineStatus {
  AppState state = AppState::loading;
  std::string lastText{};   ///< the last transcription; empty: none yet
  std::string lastError{};  ///< empty: none since the last start
};

/// Starts and stops the engine, reads its state from what it prints, restarts it when it crashes.
/// Thread: any.  Owns: the engine's process.  Borrows: the ports.
/// Fails by: state `stopped` and `lastError`; never throws.
///
/// Every stop and every start raises `generation_`. What an engine does is heard only while the
/// generation is the one it was started with, so an engine that was stopped or replaced can change
/// nothing, and being stopped is never mistaken for a crash.
class ProcessManager : public std::enable_shared_from_this<ProcessManager> {
 public:
  /// Starts nothing. The supervisor must be held by a shared_ptr.
  explicit ProcessManager(const ProcessManagerPorts& ports);

  EngineStatus status() const;
  AppState state() const;         ///< `loading` before anything was started
  std::string lastText() const;   ///< the last transcription; empty: none yet
  std::string lastError() const;  ///< empty: none since the last start

  /// Sets the one observer, called on the main thread for each state that is set, in order, also
  /// when it is the same as before. Main thread only.
  void setOnStateChange(std::function<void(AppState)> observer);

  /// Stops the engine that runs, if any, and starts it afresh. Two launches at the same moment
  /// leave one engine, that of the later.
  void launch();

  /// Asks the engine to end, waits up to `timeout`, then kills it. The state stays as it is.
  void stopAndWait(std::chrono::milliseconds timeout);

  /// Grants the full number of relaunches again.
  void resetCrashCount();

 private:
  using Generation = std::int64_t;

  void start(const std::string& path, Generation generation);
  void adopt(std::shared_ptr<ChildProcess> process, Generation generation);
  void stop(ChildProcess& process, std::chrono::milliseconds timeout);

  void handleOutput(std::string_view bytes, Generation generation);
  void parseLine(std::string_view chunk, Generation generation);
  void apply(std::string_view line, const LineEffects& effects, Generation generation);
  void handleExit(int status, Generation generation);
  void handleCrash(std::int64_t crashCount, Generation generation);

  void setState(AppState newState);
  void setStopped(Generation generation);
  void postStateChange(AppState newState);
  void deliverStateChange(AppState newState);
  void waitForObserver(Generation generation);

  const ProcessManagerPorts ports_;
  const Logger logger_;

  mutable std::mutex lock_;  // guards everything below but the observer
  AppState state_ = AppState::loading;
  std::string lastText_;
  std::string lastError_;
  std::shared_ptr<ChildProcess> process_;
  CheckedCounter generation_;
  Generation startedGeneration_ = 0;  // that of the newest start, stopped or not
  CheckedCounter crashCount_;
  int undeliveredChanges_ = 0;
  std::condition_variable changesDelivered_;

  std::function<void(AppState)> onStateChange_;  // main thread
};

}  // namespace voxtrel
