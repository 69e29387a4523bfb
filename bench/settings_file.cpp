// Measures writing the settings into the text of a settings file and reading them from it, beside a
// plain copy of that text. Prints "key: value" lines.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/settings/SettingsReader.h"
#include "common/settings/SettingsWriter.h"

namespace {

constexpr std::size_t kLargeBytes = 1 << 20;
constexpr std::size_t kQuarterBytes = kLargeBytes / 4;
constexpr double kSecondsPerRound = 0.02;
const voxtrel::ModelSettings kSettings{"de", true, "f6", "large-v3"};

std::size_t sink = 0;  // keeps the work from being optimised away

std::string usualFile() {
  return "# what the engine listens to\n[model]\nwhisper_model = \"large-v3\"\nlanguage = "
         "\"auto\"\n"
         "translate = false\n\n[audio]\nhotkey = 'right_cmd'\nhotkey_code = 54\nrate = 16000\n";
}

std::string repeated(std::string_view piece, std::size_t size) {
  std::string text;
  while (text.size() < size) text += piece;
  return text;
}

std::string notes(std::size_t size) {
  return usualFile() + repeated("# a note = of some length, as people write them\n", size);
}

std::string headers(std::size_t size) {
  return repeated("[model]\n", size);
}

/// Five passes over lines of the section that set other keys.
std::string otherKeys(std::size_t size) {
  return "[audio]\n[model]\n" + repeated("threads_of_the_decoder = 4\n", size);
}

std::string oneLine(std::size_t size) {
  return "[model]\n" + repeated("language ", size);
}

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Median of the time that one run takes, over rounds of many runs.
double secondsPerRun(int rounds, const std::function<std::size_t()>& work) {
  const double once = secondsOf([&] { sink += work(); });
  const int runs = std::max(1, static_cast<int>(kSecondsPerRound / std::max(once, 1e-9)));
  std::vector<double> seconds;
  for (int round = 0; round < rounds; ++round) {
    seconds.push_back(secondsOf([&] {
                        for (int run = 0; run < runs; ++run) sink += work();
                      }) /
                      runs);
  }
  std::ranges::sort(seconds);
  return seconds[seconds.size() / 2];
}

struct Times {
  double copy, write, read, readModel;
};

Times timesOf(int rounds, const std::string& text) {
  std::string target(text.size(), '\0');
  const auto copy = [&] {
    std::memcpy(target.data(), text.data(), text.size());
    return static_cast<std::size_t>(static_cast<unsigned char>(target[sink % target.size()]));
  };
  return {secondsPerRun(rounds, copy),
          secondsPerRun(rounds, [&] { return voxtrel::withSettings(text, kSettings).size(); }),
          secondsPerRun(rounds, [&] { return voxtrel::parseSettings(text).language.size(); }),
          secondsPerRun(rounds, [&] { return voxtrel::parseWhisperModel(text).size(); })};
}

void report(const char* file, const std::string& text, const Times& times) {
  const auto line = [file](const char* what, const char* unit, double value) {
    std::printf("%s_%s_%s: %.3f\n", file, what, unit, value);
  };
  std::printf("%s_bytes: %zu\n", file, text.size());
  line("copy", "us", times.copy * 1e6);
  line("write", "us", times.write * 1e6);
  line("read_settings", "us", times.read * 1e6);
  line("read_model", "us", times.readModel * 1e6);
  line("write", "times_copy", times.write / times.copy);
  line("read_settings", "times_copy", times.read / times.copy);
  line("read_model", "times_copy", times.readModel / times.copy);
}

/// Time per byte of the large text, divided by that of a text a quarter as long; 1 is linear.
void reportLinearity(const char* file, int rounds, const std::string& large,
                     const std::string& quarter) {
  const Times ofLarge = timesOf(rounds, large);
  const Times ofQuarter = timesOf(rounds, quarter);
  const double bytes = static_cast<double>(large.size()) / static_cast<double>(quarter.size());
  report(file, large, ofLarge);
  std::printf("%s_write_linearity: %.2f\n", file, ofLarge.write / ofQuarter.write / bytes);
  std::printf("%s_read_settings_linearity: %.2f\n", file, ofLarge.read / ofQuarter.read / bytes);
  std::printf("%s_read_model_linearity: %.2f\n", file,
              ofLarge.readModel / ofQuarter.readModel / bytes);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int rounds = argumentCount > 1 ? std::max(1, std::atoi(arguments[1])) : 7;
  std::printf("rounds: %d\n", rounds);
  report("usual", usualFile(), timesOf(rounds, usualFile()));
  reportLinearity("notes", rounds, notes(kLargeBytes), notes(kQuarterBytes));
  reportLinearity("headers", rounds, headers(kLargeBytes), headers(kQuarterBytes));
  reportLinearity("other_keys", rounds, otherKeys(kLargeBytes), otherKeys(kQuarterBytes));
  reportLinearity("one_line", rounds, oneLine(kLargeBytes), oneLine(kQuarterBytes));
  return sink == 0 ? 1 : 0;
}
