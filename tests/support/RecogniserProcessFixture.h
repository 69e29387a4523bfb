#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "common/posix/FileDescriptor.h"
#include "quillback/recognition/process/RecogniserProcess.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {

/// Counts the samples; stands for the embedded recogniser.
struct CountingBackend final : RecogniserBackend {
  LoadReport load() override { return {isUsable, {"the fallback's line"}}; }
  void begin(const std::atomic<bool>& /*isDropped*/) override { count = 0; }
  void feed(std::span<const std::int16_t> samples) override { count += samples.size(); }
  Transcription finish() override { return {"fallback " + std::to_string(count), {}, {}, {}}; }

  bool isUsable = true;
  std::size_t count = 0;
};

/// A RecogniserProcess whose child does what the test says. When it ends, no child, no zombie and no
/// descriptor is left.
/// Thread: one.
class RecogniserProcessFixture : public testing::Test {
 protected:
  using Samples = std::vector<std::int16_t>;

  ~RecogniserProcessFixture() override {
    process_.reset();
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(openDescriptors(), descriptorsBefore_);
  }

  static std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  /// The script's words are those of scripted-recogniser.
  LoadReport start(std::vector<std::string> script, RecogniserLimits limits = {},
                   int variants = 1) {
    script.insert(script.begin(), SCRIPTED_RECOGNISER);
    return startCommand(std::move(script), limits, variants);
  }
  LoadReport startCommand(std::vector<std::string> command, RecogniserLimits limits = {},
                          int variants = 1) {
    process_ = std::make_unique<RecogniserProcess>(
        std::move(command), [] { return std::make_unique<CountingBackend>(); }, limits, variants);
    return process_->load();
  }

  /// Only the first child acts.
  std::string once() const { return "once=" + (folder_.path() / "once").string(); }
  std::filesystem::path pidFile() const { return folder_.path() / "pid"; }
  std::string pid() const { return "pid=" + pidFile().string(); }
  pid_t readPid() const {
    pid_t id = 0;
    std::ifstream(pidFile()) >> id;
    return id;
  }

  /// Where a child waits.
  std::string gate() const {
    EXPECT_EQ(::mkfifo(gateFile().c_str(), 0600), 0);
    return "gate:" + gateFile().string();
  }
  /// Returns when a child waits there; neither that one nor another waits any more.
  void openGate() const {
    const FileDescriptor writer(::open(gateFile().c_str(), O_WRONLY | O_CLOEXEC));
    std::filesystem::remove(gateFile());
  }

  Transcription recognise(const Samples& samples) {
    process_->begin(isDropped_);
    process_->feed(samples);
    return process_->finish();
  }
  std::string textOf(const Samples& samples) { return recognise(samples).text; }

  /// Readable when the process has ended.
  static FileDescriptor openProcess(pid_t id) {
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, id, 0)));
  }
  static bool hasEnded(const FileDescriptor& process, int timeoutMs = 60'000) {
    pollfd watched{process.get(), POLLIN, 0};
    return ::poll(&watched, 1, timeoutMs) == 1;
  }

  std::filesystem::path gateFile() const { return folder_.path() / "gate"; }

  const std::size_t descriptorsBefore_ = openDescriptors();
  const ScratchFolder folder_;
  std::atomic<bool> isDropped_{false};
  std::unique_ptr<RecogniserProcess> process_;
};

}  // namespace voxtrel::quillback
