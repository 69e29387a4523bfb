#include "quillback/app/MicrophoneSearch.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "common/pulse/DefaultSource.h"

namespace voxtrel::quillback {
namespace {

constexpr std::chrono::seconds kSearchTime{3};
/// A server makes its socket a moment before it listens.
constexpr std::chrono::milliseconds kNextLook{200};
constexpr int kMaxLooks = 10;
// Exit statuses.
constexpr int kNoServer = 3;
constexpr int kNoSource = 4;

int exitStatusOf(SourceSearch result) {
  if (result == SourceSearch::noServer) return kNoServer;
  return result == SourceSearch::noSource ? kNoSource : 0;
}

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// Where the sound server of this machine listens; empty if it is not one.
std::string serverSocket() {
  constexpr std::string_view kUnix = "unix:";
  std::string named = variable("PULSE_SERVER");
  if (named.starts_with(kUnix)) named.erase(0, kUnix.size());
  if (!named.empty()) return named.front() == '/' ? named : "";
  const std::string ownFolder = variable("PULSE_RUNTIME_PATH");
  if (!ownFolder.empty()) return ownFolder + "/native";
  const std::string runtimeFolder = variable("XDG_RUNTIME_DIR");
  return runtimeFolder.empty() ? "" : runtimeFolder + "/pulse/native";
}

}  // namespace

MicrophoneSearch::MicrophoneSearch(Loop& loop, Reports reports)
    : loop_(loop), reports_(std::move(reports)) {
  const std::string socket = serverSocket();
  if (!socket.empty()) {
    server_ = std::make_unique<PathArrival>(socket, loop_, [this] {
      retriesLeft_ = kMaxLooks;
      look();
    });
  }
  look();
}

void MicrophoneSearch::look() {
  retryTimer_.reset();
  if (process_) {
    looksAgain_ = true;
    return;
  }
  start({"/proc/self/exe", "microphone"});
}

void MicrophoneSearch::waitForSource() {
  isWaiting_ = true;
  start({"/proc/self/exe", "microphone", std::to_string(::getpid())});
}

void MicrophoneSearch::start(const std::vector<std::string>& words) {
  process_ = ChildRun::start(words, "", loop_, [this](int exitStatus) { ended(exitStatus); });
  if (!process_) found();
}

void MicrophoneSearch::ended(int exitStatus) {
  process_.reset();
  const bool wasWaiting = std::exchange(isWaiting_, false);
  const bool looksAgain = std::exchange(looksAgain_, false);
  if (exitStatus != kNoServer && exitStatus != kNoSource) return found();
  tell(exitStatus);
  if (looksAgain) return look();
  if (exitStatus == kNoSource && !wasWaiting) return waitForSource();
  if (retriesLeft_ == 0) return;
  --retriesLeft_;
  retryTimer_ = loop_.after(kNextLook, [this] { look(); });
}

void MicrophoneSearch::found() {
  server_.reset();
  reports_.onFound();
}

void MicrophoneSearch::tell(int exitStatus) {
  if (std::exchange(isTold_, true)) return;
  reports_.onMissing(exitStatus == kNoServer ? "There is no sound server."
                                             : "There is no microphone.");
}

int searchMicrophone(const std::vector<std::string>& arguments) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (arguments.empty()) return exitStatusOf(searchDefaultSource(kSearchTime));
  // Otherwise the parent ended before that call.
  return std::to_string(::getppid()) == arguments.front() ? exitStatusOf(awaitDefaultSource()) : 0;
}

}  // namespace voxtrel::quillback
