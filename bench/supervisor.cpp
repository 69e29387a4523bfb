// How long the supervisor takes to hear of the engine, to start it and to stop it, each beside the
// bare system calls that such a thing needs at least.

#include <spawn.h>
#include <sys/wait.h>

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/EngineTimes.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/linux/application/QtMainLoop.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"
#include "voxtrel/platform/posix/PosixScheduling.h"
#include "voxtrel/supervisor/ProcessManager.h"

extern char** environ;

namespace voxtrel::bench {
namespace {

constexpr int kRounds = 9;
constexpr int kLinesPerRound = 300;
constexpr int kStartsPerRound = 20;

using Durations = std::vector<Nanoseconds>;

double percentileUs(Durations durations, double fraction) {
  std::ranges::sort(durations);
  const auto last = static_cast<double>(durations.size() - 1);
  return static_cast<double>(durations.at(static_cast<std::size_t>(last * fraction))) / 1000.0;
}

void printRatio(const char* what, double ours, double bare) {
  std::printf("%s: %.1f us, bare %.1f us, ratio %.2f\n", what, ours, bare, ours / bare);
}

struct QuietLog : Log {
  bool isEnabled(LogLevel) const override { return false; }
  void write(LogLevel, std::string_view, std::string_view) override {}
};

struct NoNotifications : Notifications {
  void setCategories(std::vector<NotificationCategory>) override {}
  void setDelegate(std::weak_ptr<NotificationDelegate>) override {}
  void requestAuthorization() override {}
  void post(UserNotification) override {}
};

/// The supervisor over the real adapters, with the timed engine in a separate folder.
class Bench {
 public:
  Bench() : times_(*EngineTimes::shareWith(engine_)) {}
  ~Bench() { std::filesystem::remove_all(folder_); }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  void measureHearing();
  void measureStarting();
  void measureStopping();

 private:
  static std::filesystem::path makeFolder() {
    std::string folder = std::filesystem::temp_directory_path() / "voxtrel-bench-XXXXXX";
    std::filesystem::path made = ::mkdtemp(folder.data());
    std::filesystem::copy_file(TIMED_ENGINE, made / "quillback");
    return made;
  }

  Durations hear();
  Durations hearBare();
  Nanoseconds start();
  Nanoseconds startBare();
  void tellEngine(int linesToWrite) {
    times_.mainEntered = times_.exiting = 0;
    times_.linesToWrite = linesToWrite;
  }
  Nanoseconds waitForMain() const {
    while (times_.mainEntered == 0) std::this_thread::yield();
    return times_.mainEntered;
  }
  pid_t spawn(const posix_spawn_file_actions_t* actions) const;

  const std::filesystem::path folder_ = makeFolder();
  const std::string engine_ = folder_ / "quillback";
  EngineTimes& times_;
  ExecutableFolder bundle_{folder_ / "voxtrel"};
  QuietLog log_;
  NoNotifications notifications_;
  SteadyClock clock_;
  QtMainLoop mainLoop_;
  PosixChildProcessLauncher launcher_;
  ThreadedBackgroundQueue queue_;
  std::shared_ptr<ProcessManager> manager_ =
      std::make_shared<ProcessManager>(ProcessManagerPorts{.bundle = bundle_,
                                                           .backgroundQueue = queue_,
                                                           .childProcesses = launcher_,
                                                           .clock = clock_,
                                                           .log = log_,
                                                           .mainLoop = mainLoop_,
                                                           .notifications = notifications_});
};

pid_t Bench::spawn(const posix_spawn_file_actions_t* actions) const {
  std::string name = engine_;
  std::string argument = "run";
  const std::array<char*, 3> arguments{name.data(), argument.data(), nullptr};
  pid_t pid = 0;
  if (::posix_spawn(&pid, engine_.c_str(), actions, nullptr, arguments.data(), environ) != 0) {
    std::perror("posix_spawn");
    std::exit(1);
  }
  return pid;
}

Durations Bench::hear() {
  Durations durations;
  tellEngine(kLinesPerRound);
  manager_->setOnStateChange([&](AppState state) {
    if (state != AppState::idle) return;
    durations.push_back(nowNs() - times_.written.at(durations.size()));
    if (durations.size() == kLinesPerRound) QCoreApplication::exit();
  });
  manager_->launch();
  QCoreApplication::exec();
  manager_->stopAndWait(std::chrono::seconds(3));
  return durations;
}

Durations Bench::hearBare() {
  Durations durations;
  tellEngine(kLinesPerRound);
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) std::exit(1);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  const pid_t pid = spawn(&actions);
  posix_spawn_file_actions_destroy(&actions);
  ::close(ends[1]);

  QObject receiver;
  const auto hearOne = [&] {
    durations.push_back(nowNs() - times_.written.at(durations.size()));
    if (durations.size() == kLinesPerRound) QCoreApplication::exit();
  };
  std::jthread reader([&] {
    std::array<char, 65536> buffer{};
    for (ssize_t size = 0; (size = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
      const auto lines = std::count(buffer.data(), buffer.data() + size, '\n');
      for (auto line = lines; line > 0; --line) {
        QMetaObject::invokeMethod(&receiver, hearOne, Qt::QueuedConnection);
      }
    }
  });
  QCoreApplication::exec();
  ::kill(pid, SIGTERM);
  ::waitpid(pid, nullptr, 0);
  reader.join();
  ::close(ends[0]);
  return durations;
}

void Bench::measureHearing() {
  Durations ours;
  Durations bare;
  for (int round = 0; round < kRounds; ++round) {
    std::ranges::copy(hear(), std::back_inserter(ours));
    std::ranges::copy(hearBare(), std::back_inserter(bare));
  }
  manager_->setOnStateChange(nullptr);
  printRatio("engine's write to onStateChange, median", percentileUs(ours, 0.5),
             percentileUs(bare, 0.5));
  printRatio("engine's write to onStateChange, p99", percentileUs(ours, 0.99),
             percentileUs(bare, 0.99));
}

Nanoseconds Bench::start() {
  tellEngine(0);
  const Nanoseconds before = nowNs();
  manager_->launch();
  const Nanoseconds duration = waitForMain() - before;
  manager_->stopAndWait(std::chrono::seconds(3));
  return duration;
}

Nanoseconds Bench::startBare() {
  tellEngine(0);
  const Nanoseconds before = nowNs();
  const pid_t pid = spawn(nullptr);
  const Nanoseconds duration = waitForMain() - before;
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
  return duration;
}

void Bench::measureStarting() {
  Durations ours;
  Durations bare;
  for (int count = 0; count < kRounds * kStartsPerRound; ++count) {
    ours.push_back(start());
    bare.push_back(startBare());
  }
  printRatio("launch() to the engine's main", percentileUs(ours, 0.5), percentileUs(bare, 0.5));
}

void Bench::measureStopping() {
  Durations ours;
  for (int count = 0; count < kRounds * kStartsPerRound; ++count) {
    tellEngine(0);
    manager_->launch();
    waitForMain();
    manager_->stopAndWait(std::chrono::seconds(3));
    if (times_.exiting != 0) ours.push_back(nowNs() - times_.exiting);
  }
  std::printf("stopAndWait() after the engine's exit, longest: %.1f us, one poll step 50000 us\n",
              percentileUs(ours, 1.0));
}

}  // namespace
}  // namespace voxtrel::bench

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  voxtrel::bench::Bench bench;
  bench.measureHearing();
  bench.measureStarting();
  bench.measureStopping();
}
