#include "voxtrel/supervisor/ProcessManager.h"

#include <utility>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/supervisor/CrashRecovery.h"
#include "voxtrel/supervisor/EngineLocation.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kStopTimeout = 3s;
constexpr std::chrono::milliseconds kExitPollInterval = 50ms;

// Output is read no faster than the main thread takes the states from it, so that a flood of output
// needs little memory.
constexpr int kMaxUndeliveredStates = 256;

}  // namespace

ProcessManager::ProcessManager(const ProcessManagerPorts& ports)
    : ports_(ports), logger_(ports.log, "process") {}

EngineStatus ProcessManager::status() {
  const std::lock_guard guard(lock_);
  outdatedSince_.reset();
  return {state_, lastText_, lastError_};
}

AppState ProcessManager::state() const {
  const std::lock_guard guard(lock_);
  return state_;
}

std::string ProcessManager::lastText() const {
  const std::lock_guard guard(lock_);
  return lastText_;
}

std::string ProcessManager::lastError() const {
  const std::lock_guard guard(lock_);
  return lastError_;
}

void ProcessManager::setOnStateChange(std::function<void(AppState)> observer) {
  onStateChange_ = std::move(observer);
}

void ProcessManager::setOnStatusOutdated(std::function<void(Clock::TimePoint since)> observer) {
  onStatusOutdated_ = std::move(observer);
}

void ProcessManager::resetCrashCount() {
  const std::lock_guard guard(lock_);
  crashCount_.reset();
}

// Starting and stopping

void ProcessManager::launch() {
  stopAndWait(kStopTimeout);
  const std::string path = binaryPath(ports_.bundle);
  if (!fileExists(path)) {
    logger_.errorWithPrivate("quillback binary not found at ", path);
    setState(AppState::stopped, [this] {
      lastError_ = "quillback binary not found";
      return true;
    });
    return;
  }
  Generation generation = 0;
  std::shared_ptr<ChildProcess> overtaken;  // another thread has started it since the stop above
  setState(AppState::loading, [&] {
    generation = startedGeneration_ = generation_.increment();
    lastError_.clear();
    overtaken = process_;
    return true;
  });
  if (overtaken && overtaken->isRunning()) stop(*overtaken, kStopTimeout);
  start(path, generation);
}

void ProcessManager::start(const std::string& path, Generation generation) {
  const std::weak_ptr<ProcessManager> weak = weak_from_this();
  ChildOptions options{
      .executable = path,
      .arguments = {"run"},
      .workingDirectory = {},
      .onOutput =
          [weak, generation, hider = std::make_shared<WordHider>()](std::string_view bytes) {
            if (const auto self = weak.lock()) self->handleOutput(bytes, *hider, generation);
          },
      .onExit =
          [weak, generation](int status) {
            if (const auto self = weak.lock()) self->handleExit(status, generation);
          }};
  auto result = ports_.childProcesses.start(std::move(options));
  if (result) {
    adopt(std::move(*result), generation);
  } else {
    setStopped(generation, result.error());
  }
}

// While this process was being started, another thread may have stopped or launched the engine. It
// could not see this process yet, so this process is ended here.
void ProcessManager::adopt(std::shared_ptr<ChildProcess> process, Generation generation) {
  {
    const std::lock_guard guard(lock_);
    if (generation_.value() == generation) {
      process_ = std::move(process);
      return;
    }
  }
  stop(*process, kStopTimeout);
}

void ProcessManager::stopAndWait(std::chrono::milliseconds timeout) {
  std::shared_ptr<ChildProcess> process;
  {
    const std::lock_guard guard(lock_);
    generation_.increment();
    process = process_;
  }
  statesDelivered_.notify_all();
  if (process && process->isRunning()) stop(*process, timeout);

  const std::lock_guard guard(lock_);
  if (process_ == process) process_ = nullptr;  // else another thread has started the next one
}

void ProcessManager::stop(ChildProcess& process, std::chrono::milliseconds timeout) {
  process.terminate();
  const auto deadline = ports_.clock.now() + timeout;
  while (process.isRunning() && ports_.clock.now() < deadline) {
    ports_.clock.sleepFor(kExitPollInterval);
  }
  if (!process.isRunning()) return;
  process.kill();
  process.waitUntilExit();
}

// Output

void ProcessManager::handleOutput(std::string_view bytes, WordHider& hider, Generation generation) {
  // The hider also needs what is dropped: a transcription may begin there.
  const std::string logged =
      !logger_.isDebugEnabled() || logger_.keepsWords() ? "" : hider.withoutWords(bytes);
  if (isValidUtf8(bytes)) parseLine(bytes, logger_.keepsWords() ? bytes : logged, generation);
}

void ProcessManager::parseLine(std::string_view chunk, std::string_view logged,
                               Generation generation) {
  {
    const std::lock_guard guard(lock_);
    if (generation_.value() != generation) return;
  }
  if (logger_.isDebugEnabled()) {
    forEachLine(logged, [this](std::string_view line) {
      if (!line.empty()) logger_.debugPrivate(line);
    });
  }
  interpretChunk(chunk, [&](std::string_view line, const LineEffects& effects) {
    apply(line, effects, generation);
  });
}

// After a stop, the chunk that is being read still counts; after the next start, no longer.
void ProcessManager::apply(std::string_view line, const LineEffects& effects,
                           Generation generation) {
  const auto now = ports_.clock.now();
  {
    const std::lock_guard guard(lock_);
    if (startedGeneration_ != generation) return;
    if (effects.state) state_ = *effects.state;
    if (effects.state == AppState::idle) crashCount_.reset();
    if (effects.isError) lastError_ = line;
    if (effects.transcription) lastText_ = *effects.transcription;
  }
  announce(now, effects.state);
  if (effects.state) waitForObserver(generation);
}

// The engine's end

void ProcessManager::handleExit(int status, Generation generation) {
  const auto now = ports_.clock.now();
  std::int64_t crashCount = 0;
  {
    const std::lock_guard guard(lock_);
    if (generation_.value() != generation) return;
    if (status == 0) {
      crashCount_.reset();
    } else {
      if (lastError_.empty()) lastError_ = "Exited with code " + std::to_string(status);
      crashCount = crashCount_.increment();
    }
  }
  if (status == 0) {
    setStopped(generation);
  } else {
    announce(now);
    logger_.error("Process exited with code " + std::to_string(status));
    handleCrash(crashCount, generation);
  }
}

void ProcessManager::handleCrash(std::int64_t crashCount, Generation generation) {
  const auto delay = relaunchDelay(crashCount);
  if (!delay) {
    CrashNotificationHelper::postFinal(ports_.notifications, kMaxCrashes);
    setStopped(generation);
    return;
  }
  CrashNotificationHelper::postRestart(ports_.notifications, crashCount, kMaxCrashes);
  ports_.backgroundQueue.runAfter(*delay, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->launch();
  });
}

// Changes and their observers

// `edit` runs under the lock, changes what goes with the state, and says whether the state is set.
void ProcessManager::setState(AppState newState, const std::function<bool()>& edit) {
  const auto now = ports_.clock.now();
  {
    const std::lock_guard guard(lock_);
    if (!edit()) return;
    state_ = newState;
  }
  announce(now, newState);
}

// Does nothing after a newer start: then the new engine's state stays.
void ProcessManager::setStopped(Generation generation, const std::string& error) {
  setState(AppState::stopped, [&] {
    if (startedGeneration_ != generation) return false;
    if (!error.empty()) lastError_ = error;
    return true;
  });
}

// `changedAt` was taken before the change. Between two calls of status() only the first change posts
// a task, and each state that is set.
void ProcessManager::announce(Clock::TimePoint changedAt, std::optional<AppState> newState) {
  {
    const std::lock_guard guard(lock_);
    if (newState) ++undeliveredStates_;
    const bool isAnnounced = outdatedSince_.has_value();
    if (!isAnnounced) outdatedSince_ = changedAt;
    if (isAnnounced && !newState) return;
  }
  ports_.mainLoop.post([weak = weak_from_this(), newState] {
    if (const auto self = weak.lock()) self->deliver(newState);
  });
}

void ProcessManager::deliver(std::optional<AppState> newState) {
  std::optional<Clock::TimePoint> outdatedSince;
  {
    const std::lock_guard guard(lock_);
    if (newState) --undeliveredStates_;
    outdatedSince = outdatedSince_;
  }
  statesDelivered_.notify_all();
  if (newState && onStateChange_) onStateChange_(*newState);
  if (outdatedSince && onStatusOutdated_) onStatusOutdated_(*outdatedSince);
}

void ProcessManager::waitForObserver(Generation generation) {
  std::unique_lock guard(lock_);
  statesDelivered_.wait(guard, [&] {
    return undeliveredStates_ < kMaxUndeliveredStates || generation_.value() != generation;
  });
}

}  // namespace voxtrel
