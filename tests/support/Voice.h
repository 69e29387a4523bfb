#pragma once

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/WholeWav.h"

namespace voxtrel::quillback::test {

/// Synthetic speech as files in a temporary folder.
/// Thread: one.  Owns: the folder.
class Voice {
 public:
  Voice() {
    std::string name = (std::filesystem::temp_directory_path() / "voice-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    folder_ = name;
  }
  Voice(const Voice&) = delete;
  Voice& operator=(const Voice&) = delete;
  ~Voice() { std::filesystem::remove_all(folder_); }

  std::string folder() const { return folder_; }

  /// The path of a WAV file in which `voice` says `text`; empty on failure.
  std::string say(const std::string& text, const std::string& voice = "en-us+edward",
                  const std::string& wordsPerMinute = "165") {
    const std::string path = folder_ + "/" + std::to_string(count_++) + ".wav";
    std::vector<std::string> words = {"espeak-ng",    "-v", voice, "-s",
                                      wordsPerMinute, "-w", path,  text};
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = -1;
    if (::posix_spawnp(&child, "espeak-ng", nullptr, nullptr, arguments.data(), environ) != 0 ||
        ::waitpid(child, &status, 0) != child || status != 0) {
      return {};
    }
    return path;
  }

  /// The file as samples for the recogniser.
  static std::vector<std::int16_t> samplesOf(const std::string& path) {
    const auto wav = readWav(path);
    if (!wav) return {};
    return resampled(wav->samples, wav->rateHz);
  }

 private:
  std::string folder_;
  int count_ = 0;
};

}  // namespace voxtrel::quillback::test
