#include "voxtrel/supervisor/ProcessManager.h"

#include <utility>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/supervisor/CrashNotificationHelper.h"
#include "voxtrel/supervisor/CrashPolicy.h"
#include "voxtrel/supervisor/EngineLocation.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kStopTimeout = 3s;
constexpr std::chrono::milliseconds kExitPollInterval = 50ms;

// An engine that floods its output is read no faster than the main thread hears of its states, so
// that what waits for the main thread stays small.
constexpr int kMaxUndeliveredChanges = 256;

}  // namespace

ProcessManager::ProcessManager(const ProcessManagerPorts& ports)
    : ports_(ports), logger_(ports.log, "process") {}

EngineStatus ProcessManager::status() const {
  const std::lock_guard guard(lock_);
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

void ProcessManager::resetCrashCount() {
  const std::lock_guard guard(lock_);
  crashCount_.reset();
}

// Starting and stopping

void ProcessManager::launch() {
  stopAndWait(kStopTimeout);
  const std::string path = binaryPath(ports_.bundle);
  if (!fileExists(path)) {
    logger_.error("quillback binary not found at " + path);
    setState(AppState::stopped);
    const std::lock_guard guard(lock_);
    lastError_ = "quillback binary not found";
    return;
  }
  Generation generation = 0;
  std::shared_ptr<ChildProcess> overtaken;  // another thread has started it since the stop above
  {
    const std::lock_guard guard(lock_);
    generation = startedGeneration_ = generation_.increment();
    lastError_.clear();
    state_ = AppState::loading;
    overtaken = process_;
  }
  postStateChange(AppState::loading);
  if (overtaken && overtaken->isRunning()) stop(*overtaken, kStopTimeout);
  start(path, generation);
}

void ProcessManager::start(const std::string& path, Generation generation) {
  const std::weak_ptr<ProcessManager> weak = weak_from_this();
  ChildOptions options{.executable = path,
                       .arguments = {"run"},
                       .workingDirectory = {},
                       .onOutput =
                           [weak, generation](std::string_view bytes) {
                             if (const auto self = weak.lock())
                               self->handleOutput(bytes, generation);
                           },
                       .onExit =
                           [weak, generation](int status) {
                             if (const auto self = weak.lock())
                               self->handleExit(status, generation);
                           }};
  auto result = ports_.childProcesses.start(std::move(options));
  if (!result) {
    {
      const std::lock_guard guard(lock_);
      if (startedGeneration_ == generation) lastError_ = result.error();
    }
    setStopped(generation);
    return;
  }
  adopt(std::move(*result), generation);
}

// Between the raising of the generation and the end of the start, another thread may have stopped
// or launched the engine. It could not see this process yet, so this process is ended here.
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
  changesDelivered_.notify_all();
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

void ProcessManager::handleOutput(std::string_view bytes, Generation generation) {
  if (isValidUtf8(bytes)) parseLine(bytes, generation);
}

void ProcessManager::parseLine(std::string_view chunk, Generation generation) {
  {
    const std::lock_guard guard(lock_);
    if (generation_.value() != generation) return;
  }
  const auto applyLine = [&](std::string_view line, const LineEffects& effects) {
    apply(line, effects, generation);
  };
  if (!logger_.isDebugEnabled()) {
    interpretChunk(chunk, applyLine);
    return;
  }
  forEachLine(chunk, [&](std::string_view line) {
    if (line.empty()) return;
    logger_.debug(line);
    applyLine(line, interpretLine(line));
  });
}

// A chunk that was being read when the engine was stopped is read to its end: nothing that was said
// is lost. Once the next engine was started, it has nothing more to say.
void ProcessManager::apply(std::string_view line, const LineEffects& effects,
                           Generation generation) {
  {
    const std::lock_guard guard(lock_);
    if (startedGeneration_ != generation) return;
    if (effects.state) state_ = *effects.state;
    if (effects.state == AppState::idle) crashCount_.reset();
    if (effects.isError) lastError_ = line;
    if (effects.transcription) lastText_ = *effects.transcription;
  }
  if (effects.state) {
    postStateChange(*effects.state);
    waitForObserver(generation);
  }
}

// The engine's end

void ProcessManager::handleExit(int status, Generation generation) {
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

// State

void ProcessManager::setState(AppState newState) {
  {
    const std::lock_guard guard(lock_);
    state_ = newState;
  }
  postStateChange(newState);
}

// Unless another start is under way since: then the new engine's state stands.
void ProcessManager::setStopped(Generation generation) {
  {
    const std::lock_guard guard(lock_);
    if (startedGeneration_ != generation) return;
    state_ = AppState::stopped;
  }
  postStateChange(AppState::stopped);
}

void ProcessManager::postStateChange(AppState newState) {
  {
    const std::lock_guard guard(lock_);
    ++undeliveredChanges_;
  }
  ports_.mainLoop.post([weak = weak_from_this(), newState] {
    if (const auto self = weak.lock()) self->deliverStateChange(newState);
  });
}

void ProcessManager::deliverStateChange(AppState newState) {
  {
    const std::lock_guard guard(lock_);
    --undeliveredChanges_;
  }
  changesDelivered_.notify_all();
  if (onStateChange_) onStateChange_(newState);
}

void ProcessManager::waitForObserver(Generation generation) {
  std::unique_lock guard(lock_);
  changesDelivered_.wait(guard, [&] {
    return undeliveredChanges_ < kMaxUndeliveredChanges || generation_.value() != generation;
  });
}

}  // namespace voxtrel
