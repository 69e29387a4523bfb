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
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/supervisor/AppState.h"
#include "voxtrel/supervisor/LineProtocol.h"

namespace voxtrel {

class ApplicationBundle;
class ChildProcess;
class ChildProcessLauncher;
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

/// Starts and stops the engine, reads its state from what it prints, restarts it when it crashes.
/// Thread: any.  Owns: the engine's process.  Borrows: the ports.
/// Fails by: state `stopped` and `lastError`; never throws.
///
/// Every stop and every start raises `generation_`. An engine's output and exit count only while the
/// generation is still the one it was started with. So an engine that was stopped or replaced can
/// change nothing, and a stop is never taken for a crash.
class ProcessManager : public std::enable_shared_from_this<ProcessManager> {
 public:
  /// Starts nothing. The supervisor must be held by a shared_ptr.
  explicit ProcessManager(const ProcessManagerPorts& ports);

  /// The status now. The first change after this call is announced again (setOnStatusOutdated).
  EngineStatus status();
  AppState state() const;         ///< `loading` before anything was started
  std::string lastText() const;   ///< the last transcription; empty: none yet
  std::string lastError() const;  ///< empty: none since the last start

  /// Sets the observer of states, called on the main thread for each state that is set, in order,
  /// also when it is the same as before. Main thread only.
  void setOnStateChange(std::function<void(AppState)> observer);

  /// Sets the observer of the status, called on the main thread at least once after a change has
  /// made the last result of status() outdated, with the time of that change. Main thread only.
  void setOnStatusOutdated(std::function<void(Clock::TimePoint since)> observer);

  /// Starts the engine; one that runs is stopped first. Two launches at the same moment leave one
  /// engine, that of the later.
  void launch();

  /// Asks the engine to end, waits up to `timeout`, then kills it. The state does not change.
  void stopAndWait(std::chrono::milliseconds timeout);

  /// Allows the full number of relaunches again.
  void resetCrashCount();

 private:
  using Generation = std::int64_t;

  void start(const std::string& path, Generation generation);
  void adopt(std::shared_ptr<ChildProcess> process, Generation generation);
  void stop(ChildProcess& process, std::chrono::milliseconds timeout);

  void handleOutput(std::string_view bytes, WordHider& hider, Generation generation);
  /// `logged`: the chunk as it goes to the log.
  void parseLine(std::string_view chunk, std::string_view logged, Generation generation);
  void apply(std::string_view line, const LineEffects& effects, Generation generation);
  void handleExit(int status, Generation generation);
  void handleCrash(std::int64_t crashCount, Generation generation);

  void setState(AppState newState, const std::function<bool()>& edit);
  void setStopped(Generation generation, const std::string& error = {});
  void announce(Clock::TimePoint changedAt, std::optional<AppState> newState = {});
  void deliver(std::optional<AppState> newState);
  void waitForObserver(Generation generation);

  const ProcessManagerPorts ports_;
  const Logger logger_;

  mutable std::mutex lock_;  // guards everything below except the observers
  AppState state_ = AppState::loading;
  std::string lastText_;
  std::string lastError_;
  std::shared_ptr<ChildProcess> process_;
  CheckedCounter generation_;
  Generation startedGeneration_ = 0;  // of the newest start, stopped or not
  CheckedCounter crashCount_;
  std::optional<Clock::TimePoint> outdatedSince_;  // first change after status() was called
  int undeliveredStates_ = 0;
  std::condition_variable statesDelivered_;

  // Main thread.
  std::function<void(AppState)> onStateChange_;
  std::function<void(Clock::TimePoint)> onStatusOutdated_;
};

}  // namespace voxtrel
