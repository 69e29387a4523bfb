// Measures how fast the engine's output is searched for lines that matter, beside a plain split
// with nine searches a line and beside the usual programs for searching text. Prints "key: value"
// lines.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "common/base/Utf8.h"
#include "voxtrel/supervisor/LineProtocol.h"

namespace {

constexpr std::size_t kFileBytes = 200'000'000;
constexpr std::size_t kChunkBytes = 65536;  // what a pipe holds
constexpr std::uint64_t kLinesPerMarker = 50;

constexpr std::array<std::string_view, 9> kLiterals = {"Recording...",
                                                       "Processing",
                                                       "Ready.",
                                                       "encode=",
                                                       "[quillback] ERROR",
                                                       "[quillback] Failed",
                                                       "Audio capture failed",
                                                       "Accessibility",
                                                       "Microphone permission"};

constexpr std::array<std::string_view, 12> kPlainLines = {
    "[quillback] loading layer # of 32: attention and projection tensors",
    "[quillback] Connected to the audio server, source # at 48000 Hz",
    "[gpu-decode] step #: kv cache 448 x 1280, beam 5",
    "whisper: mel spectrogram # x 3000 in 4.2 ms, batch=1 threads=4",
    "decoder: token # logprob=-0.31 temperature=0.0 no_speech=0.02",
    "Reading tensors, model=large-v3 part # Result: ok",
    "[gpu-encode] Allocated # MiB on device 0, Active queues: 2",
    "[quillback] Preparing buffers (ring of # frames)",
    "vad: frame # energy=-42.7 dB Accepted",
    "[quillback] hotkey pressed after # ms",
    "Loading weights, shard # of 7 ...",
    R"([quillback] Found microphone # "Built-in", Metal device "GPU 0": 16 GiB)"};

constexpr std::array<std::string_view, 7> kMarkerLines = {
    "Recording...",
    "Processing # ms of audio",
    "[quillback] Ready. Hold the key to talk",
    "[gpu-decode] mel=4ms encode=#ms decode=81ms total=127ms",
    R"([gpu-decode] text: "see you next week, we need # more minutes" encode=12ms)",
    "[quillback] Failed to open input #",
    "Audio capture failed: device # went away"};

std::string generatedLines() {
  std::mt19937_64 random(20240607);
  const auto below = [&random](std::uint64_t limit) { return random() % limit; };
  std::string text;
  text.reserve(kFileBytes + 200);
  while (text.size() < kFileBytes) {
    const bool isMarked = below(kLinesPerMarker) == 0;
    std::string line(isMarked ? kMarkerLines[below(kMarkerLines.size())]
                              : kPlainLines[below(kPlainLines.size())]);
    if (const std::size_t hole = line.find('#'); hole != std::string::npos) {
      line.replace(hole, 1, std::to_string(below(100'000'000)));
    }
    if (!isMarked && below(16) == 0) line += ", t=" + std::to_string(below(1'000'000));
    text += line + '\n';
  }
  return text;
}

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <typename Take>
void forEachChunk(std::string_view text, Take take) {
  for (; !text.empty(); text.remove_prefix(std::min(kChunkBytes, text.size()))) {
    take(text.substr(0, kChunkBytes));
  }
}

std::size_t countEffects(std::string_view text) {
  std::size_t count = 0;
  forEachChunk(text, [&count](std::string_view chunk) {
    voxtrel::interpretChunk(chunk, [&count](auto, const auto&) { ++count; });
  });
  return count;
}

bool isUtf8Throughout(std::string_view text) {
  bool isValid = true;
  forEachChunk(text, [&isValid](std::string_view chunk) {
    isValid = voxtrel::isValidUtf8(chunk) && isValid;
  });
  return isValid;
}

std::size_t countByFind(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    const void* newline = std::memchr(text.data(), '\n', text.size());
    const std::size_t size =
        newline == nullptr
            ? text.size()
            : static_cast<std::size_t>(static_cast<const char*>(newline) - text.data());
    const std::string_view line = text.substr(0, size);
    unsigned int found = 0;
    for (const std::string_view literal : kLiterals) {
      found |= line.find(literal) != std::string_view::npos ? 1U : 0U;
    }
    count += found;
    text.remove_prefix(std::min(size + 1, text.size()));
  }
  return count;
}

/// A program that counts the lines of `file` which hold a literal; 0 where it is missing or fails.
std::size_t countByProgram(const std::string& program, const std::filesystem::path& file) {
  std::string command = "LC_ALL=C " + program + " -c -F";
  for (const std::string_view literal : kLiterals) command += " -e '" + std::string(literal) + "'";
  command += " '" + file.string() + "' 2>/dev/null";
  FILE* output = ::popen(command.c_str(), "r");
  if (output == nullptr) return 0;
  std::array<char, 64> answer{};
  const bool hasAnswer = std::fgets(answer.data(), answer.size(), output) != nullptr;
  ::pclose(output);
  return hasAnswer ? std::strtoull(answer.data(), nullptr, 10) : 0;
}

struct Contender {
  std::string name;
  std::function<std::size_t()> count;
  std::vector<double> seconds{};
  std::size_t lines = 0;

  double median() const {
    std::vector<double> sorted = seconds;
    std::ranges::sort(sorted);
    return sorted[sorted.size() / 2];
  }
};

void report(const std::vector<Contender>& contenders, std::size_t bytes) {
  const double ours = contenders.front().median();
  for (const Contender& contender : contenders) {
    const char* name = contender.name.c_str();
    std::printf("%s_lines: %zu\n", name, contender.lines);
    if (contender.lines == 0) continue;  // the program is not there
    std::printf("%s_ms: %.1f\n", name, contender.median() * 1e3);
    std::printf("%s_GB_per_s: %.2f\n", name, static_cast<double>(bytes) / contender.median() / 1e9);
  }
  for (const Contender& contender : contenders) {
    if (contender.lines == 0) continue;
    std::printf("ours_times_%s: %.2f\n", contender.name.c_str(), contender.median() / ours);
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int rounds = argumentCount > 1 ? std::max(1, std::atoi(arguments[1])) : 7;
  const std::string text = generatedLines();
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() /
      ("voxtrel-lines-" + std::to_string(std::random_device()()) + ".txt");
  std::ofstream(file, std::ios::binary) << text;

  std::vector<Contender> contenders;
  contenders.push_back({"ours", [&] { return countEffects(text); }});
  contenders.push_back(
      {"ours_with_utf8", [&] { return isUtf8Throughout(text) ? countEffects(text) : 0; }});
  contenders.push_back({"find", [&] { return countByFind(text); }});
  contenders.push_back({"grep", [&] { return countByProgram("grep", file); }});
  contenders.push_back({"rg", [&] { return countByProgram("rg --no-config", file); }});
  for (int round = 0; round < rounds; ++round) {
    for (Contender& contender : contenders) {
      contender.seconds.push_back(secondsOf([&] { contender.lines = contender.count(); }));
    }
  }
  std::filesystem::remove(file);

  const auto lines = static_cast<double>(std::ranges::count(text, '\n'));
  std::printf("bytes: %zu\nrounds: %d\n", text.size(), rounds);
  std::printf("mean_line_bytes: %.1f\n", static_cast<double>(text.size()) / lines);
  report(contenders, text.size());
}
