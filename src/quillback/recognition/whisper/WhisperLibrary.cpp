#include "quillback/recognition/whisper/WhisperLibrary.h"

#include <ggml-backend.h>
#include <whisper.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "quillback/recognition/speech/PiecewiseBackend.h"
#include "quillback/recognition/whisper/ParakeetModel.h"
#include "quillback/recognition/whisper/SileroDetector.h"
#include "quillback/recognition/whisper/WhisperModel.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

std::optional<int> readNumber(const fs::path& file) {
  std::ifstream input(file);
  int number = 0;
  if (input >> number) return number;
  return std::nullopt;
}

/// Whether `name` is "cpu" and a number.
bool isProcessor(const std::string& name) {
  return name.size() > 3 && name.starts_with("cpu") &&
         std::all_of(name.begin() + 3, name.end(),
                     [](unsigned char c) { return std::isdigit(c) != 0; });
}

std::unique_ptr<SpeechModel> makeModel(const RecogniserOptions& options) {
  if (options.family == RecogniserOptions::Family::parakeet) {
    return std::make_unique<ParakeetModel>(options);
  }
  return std::make_unique<WhisperModel>(options);
}

}  // namespace

int physicalCores(const char* cpuFolder) {
  std::set<std::pair<int, int>> cores;  // package, number within it
  std::error_code error;
  for (fs::directory_iterator entry(cpuFolder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (!isProcessor(entry->path().filename().string())) continue;
    // A processor that is switched off has no topology.
    const fs::path topology = entry->path() / "topology";
    const auto core = readNumber(topology / "core_id");
    const auto package = readNumber(topology / "physical_package_id");
    if (core && package) cores.emplace(*package, *core);
  }
  if (!cores.empty()) return static_cast<int>(cores.size());
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

void loadProcessorModules() {
#ifdef QUILLBACK_GGML_MODULES
  // The library's own search would look into the current folder, where anybody may put a module.
  if (ggml_backend_dev_count() == 0) ggml_backend_load_all_from_path(QUILLBACK_GGML_MODULES);
#endif
}

bool isWhisperBuiltIn() {
  return true;
}

std::unique_ptr<RecogniserBackend> makeWhisperBackend(const RecogniserOptions& options) {
  RecogniserOptions complete = options;
  if (complete.threads <= 0) complete.threads = physicalCores(kCpuFolder);
  return std::make_unique<PiecewiseBackend>(
      makeModel(complete),
      [file = complete.voiceDetectionFile]() -> std::unique_ptr<VoiceDetector> {
        return SileroDetector::load(file);
      });
}

std::string describeWhisper() {
  loadProcessorModules();
  std::string text = std::string("whisper.cpp ") + whisper_version();
  for (std::size_t at = 0; at < ggml_backend_dev_count(); ++at) {
    text += std::string(at == 0 ? " on " : ", ") +
            ggml_backend_dev_description(ggml_backend_dev_get(at));
  }
  return text;
}

}  // namespace voxtrel::quillback
