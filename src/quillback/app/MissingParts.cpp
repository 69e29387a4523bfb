#include "quillback/app/MissingParts.h"

#include <sys/prctl.h>

#include <cctype>
#include <chrono>
#include <csignal>
#include <utility>

#include "common/pulse/DefaultSource.h"

namespace voxtrel::quillback {
namespace {

constexpr std::chrono::seconds kSearchTime{3};
// Exit statuses.
constexpr int kNoServer = 3;
constexpr int kNoSource = 4;

std::string missingMicrophone(int exitStatus) {
  if (exitStatus == kNoServer) return "There is no sound server.";
  if (exitStatus == kNoSource) return "There is no microphone.";
  return "";
}

}  // namespace

MissingParts::MissingParts(Loop& loop, Output& output, Notify notify)
    : loop_(loop), output_(output), notify_(std::move(notify)) {}

void MissingParts::keyIsSeen() {
  key_ = "";
  tell();
}

void MissingParts::keyIsMissing(const std::string& text) {
  key_ = text;
  if (!key_->empty()) key_->front() = static_cast<char>(std::toupper(text.front()));
  tell();
}

void MissingParts::lookForMicrophone() {
  search_ = ChildRun::start({"/proc/self/exe", "microphone"}, "", loop_,
                            [this](int exitStatus) { foundMicrophone(exitStatus); });
  if (!search_) foundMicrophone(0);
}

void MissingParts::foundMicrophone(int exitStatus) {
  search_.reset();
  microphone_ = missingMicrophone(exitStatus);
  if (!microphone_->empty()) {
    output_.print("[quillback] " + *microphone_ + " Each press of the key looks again.");
  }
  tell();
}

void MissingParts::tell() {
  if (!key_ || !microphone_ || (key_->empty() && microphone_->empty())) return;
  const bool lacksBoth = !key_->empty() && !microphone_->empty();
  notify_("Dictation does not work yet", *microphone_ + (lacksBoth ? " " : "") + *key_);
  key_ = microphone_ = "";
}

int searchMicrophone() {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  switch (searchDefaultSource(kSearchTime)) {
    case SourceSearch::noServer:
      return kNoServer;
    case SourceSearch::noSource:
      return kNoSource;
    case SourceSearch::found:
    case SourceSearch::unknown:
      break;
  }
  return 0;
}

}  // namespace voxtrel::quillback
