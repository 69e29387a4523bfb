#include "voxtrel/platform/posix/Supervision.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace voxtrel {

void TestMainLoop::post(Task task) {
  const std::lock_guard guard(mutex_);
  tasks_.push_back(std::move(task));
  mostWaiting_ = std::max(mostWaiting_, tasks_.size());
  posted_.notify_one();
}

void TestMainLoop::postAfter(std::chrono::milliseconds /*delay*/, Task /*task*/) {
  ADD_FAILURE() << "the supervisor delays nothing on the main loop";
}

Subscription TestMainLoop::at(Clock::TimePoint /*time*/, Task /*task*/) {
  ADD_FAILURE() << "the supervisor sets no timers on the main loop";
  return {};
}

Subscription TestMainLoop::every(std::chrono::milliseconds /*interval*/, Task /*task*/) {
  ADD_FAILURE() << "the supervisor repeats nothing on the main loop";
  return {};
}

bool TestMainLoop::runUntil(const std::function<bool()>& holds, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  std::unique_lock guard(mutex_);
  for (;;) {
    guard.unlock();
    const bool done = holds();
    guard.lock();
    if (done || std::chrono::steady_clock::now() >= deadline) return done;
    if (tasks_.empty()) posted_.wait_for(guard, std::chrono::milliseconds(1));
    for (std::size_t left = tasks_.size(); left > 0; --left) {
      Task task = std::move(tasks_.front());
      tasks_.pop_front();
      guard.unlock();
      task();
      guard.lock();
    }
  }
}

std::size_t TestMainLoop::mostWaiting() const {
  const std::lock_guard guard(mutex_);
  return mostWaiting_;
}

void RecordedNotifications::post(UserNotification notification) {
  const std::lock_guard guard(mutex_);
  FakeNotifications::post(std::move(notification));
}

std::size_t RecordedNotifications::count() const {
  const std::lock_guard guard(mutex_);
  return posted.size();
}

namespace {

std::filesystem::path folderWithEngine() {
  std::string folder = (std::filesystem::temp_directory_path() / "voxtrel-engine-XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder");
  std::filesystem::copy_file(SCRIPTED_ENGINE, folder + "/quillback");
  return folder;
}

}  // namespace

Supervision::Supervision()
    : folder_(folderWithEngine()),
      bundle_(folder_ / "voxtrel"),
      manager_(
          std::make_shared<ProcessManager>(ProcessManagerPorts{.bundle = bundle_,
                                                               .backgroundQueue = backgroundQueue_,
                                                               .childProcesses = launcher_,
                                                               .clock = clock_,
                                                               .log = log_,
                                                               .mainLoop = mainLoop_,
                                                               .notifications = notifications_})) {}

Supervision::~Supervision() {
  manager_->stopAndWait(std::chrono::seconds(3));
  std::filesystem::remove_all(folder_);
}

void Supervision::script(const std::string& commands) const {
  std::ofstream(folder_ / "quillback.script") << commands;
}

std::vector<int> Supervision::runningEngines() const {
  std::vector<int> running;
  for (const auto& process : std::filesystem::directory_iterator("/proc")) {
    std::error_code gone;
    const auto program = std::filesystem::read_symlink(process.path() / "exe", gone);
    if (program != folder_ / "quillback") continue;
    const std::string name = process.path().filename();
    int pid = 0;
    std::from_chars(name.data(), name.data() + name.size(), pid);
    running.push_back(pid);
  }
  return running;
}

}  // namespace voxtrel
