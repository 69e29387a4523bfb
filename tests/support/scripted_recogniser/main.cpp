// scripted-recogniser [STEP=ACT]... [once=FILE] [first=yes] [pid=FILE]: a recogniser's process that
// does ACT in one of its steps (load, begin, feed, finish, drop). A last word that is a number is the kind
// of processor to use. With `once` only the process that creates FILE does so, with `below=N` only one for a
// better kind, with `first` only in its first utterance. ACT may be several, with commas between them; `gate:FIFO` waits until the
// test opens the other end.
//
// scripted-recogniser own [STEP=ACT]...: an engine with such a process, which waits to be killed.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "quillback/recognition/process/RecogniserProcess.h"
#include "quillback/recognition/process/RecogniserServer.h"

using namespace voxtrel::quillback;

namespace {

using Script = std::map<std::string, std::string>;

/// The server moves the socket; this one stays.
constexpr int kSocketCopy = 100;

void send(int socket, std::string_view bytes) {
  [[maybe_unused]] const auto count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

[[noreturn]] void endBySignal(int signal) {
  std::signal(signal, SIG_DFL);  // a sanitizer may have its own
  std::raise(signal);
  std::abort();
}

class ScriptedRecogniser final : public RecogniserBackend {
 public:
  explicit ScriptedRecogniser(Script script) : script_(std::move(script)) {
    const std::string once = script_["once"];
    mayAct_ = once.empty() || ::open(once.c_str(), O_CREAT | O_EXCL | O_CLOEXEC, 0600) >= 0;
    if (!script_["below"].empty()) mayAct_ = script_["variant"] < script_["below"];
    if (const std::string file = script_["pid"]; !file.empty()) writePid(file);
  }

  LoadReport load() override {
    act("load");
    std::printf("a library talks\n");
    std::fflush(stdout);
    std::fprintf(stderr, "a library complains\n");
    return {script_["load"] != "unusable", {"a line of the model"}};
  }

  void begin(const std::atomic<bool>& isDropped) override {
    isDropped_ = &isDropped;
    if (std::exchange(hasBegun_, true) && !script_["first"].empty()) mayAct_ = false;
    count_ = 0;
    sum_ = 0;
    act("begin");
  }

  void feed(std::span<const std::int16_t> samples) override {
    act("feed");
    count_ += samples.size();
    for (const std::int16_t sample : samples) sum_ += sample;
  }

  Transcription finish() override {
    act("finish");
    Transcription result;
    result.text = std::to_string(count_) + " samples, sum " + std::to_string(sum_);
    result.decode = std::chrono::microseconds(7);
    result.lines = {"a line of the result"};
    return result;
  }

  void drop() override { act("drop"); }

 private:
  static void writePid(const std::string& file) {
    std::FILE* const out = std::fopen(file.c_str(), "we");
    if (out == nullptr) return;
    std::fprintf(out, "%d\n", static_cast<int>(::getpid()));
    std::fclose(out);
  }

  void act(const std::string& step) {
    if (!mayAct_) return;
    std::istringstream acts(script_[step]);
    for (std::string what; std::getline(acts, what, ',');) perform(what);
  }

  void perform(const std::string& what) const {
    constexpr std::string_view kGate = "gate:";
    if (what == "exit") ::_exit(3);
    if (what == "abort") endBySignal(SIGABRT);
    if (what == "ill") endBySignal(SIGILL);
    if (what == "hang") waitFor(nullptr);
    if (what == "until-dropped") waitFor(isDropped_);
    if (what == "garbage") send(kSocketCopy, "* is no message");
    if (what == "huge") send(kSocketCopy, std::string_view("\x06\xff\xff\xff\x7f", 5));
    if (what == "early") send(kSocketCopy, std::string_view("\x07\0\0\0\0", 5));
    if (what.starts_with(kGate)) {
      ::close(::open(what.c_str() + kGate.size(), O_RDONLY | O_CLOEXEC));
    }
  }

  static void waitFor(const std::atomic<bool>* flag) {
    while (flag == nullptr || !*flag) std::this_thread::yield();
  }

  Script script_;
  bool mayAct_ = true;
  bool hasBegun_ = false;
  const std::atomic<bool>* isDropped_ = nullptr;
  std::size_t count_ = 0;
  long sum_ = 0;
};

int own(const std::vector<std::string>& words) {
  std::vector<std::string> command{"/proc/self/exe"};
  command.insert(command.end(), words.begin() + 1, words.end());
  RecogniserProcess process(command, nullptr);
  const bool isUsable = process.load().isUsable;
  std::printf("%s\n", isUsable ? "loaded" : "unusable");
  std::fflush(stdout);
  if (!isUsable) return 1;
  const std::atomic<bool> isDropped{false};
  process.begin(isDropped);
  process.finish();
  for (;;) ::pause();
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (!words.empty() && words[0] == "own") return own(words);
  Script script;
  for (const std::string& word : words) {
    const std::size_t at = word.find('=');
    if (at == std::string::npos) {
      script["variant"] = word;
      continue;
    }
    script[word.substr(0, at)] = word.substr(at + 1);
  }
  ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, kSocketCopy);
  ScriptedRecogniser backend(script);
  return serveRecogniser(STDIN_FILENO, backend);
}
