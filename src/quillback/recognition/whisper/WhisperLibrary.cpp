#include "quillback/recognition/whisper/WhisperLibrary.h"

#include <ggml-backend.h>
#include <ggml.h>
#include <parakeet.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <whisper.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "common/base/Handle.h"
#include "quillback/ports/Microphone.h"
#include "quillback/recognition/speech/PiecewiseBackend.h"
#include "quillback/recognition/whisper/ParakeetModel.h"
#include "quillback/recognition/whisper/ProcessorModules.h"
#include "quillback/recognition/whisper/SileroDetector.h"
#include "quillback/recognition/whisper/WeightsFile.h"
#include "quillback/recognition/whisper/WhisperModel.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

void discardLog(ggml_log_level /*level*/, const char* /*text*/, void* /*data*/) {}

/// Silences the library and loads its code for this processor, where that is in modules. Returns the module;
/// once one is loaded, that stays.
const fs::path& prepareLibrary(int processorVariant) {
  whisper_log_set(discardLog, nullptr);
  parakeet_log_set(discardLog, nullptr);
  static const fs::path kModule = loadModules(moduleFolder(), processorVariant);
  return kModule;
}

/// "haswell" of "libggml-cpu-haswell.so".
std::string kindOf(const fs::path& module) {
  const std::string name = module.stem();
  return name.substr(name.rfind('-') + 1);
}

/// Faint noise, half a second.
std::vector<float> trialSound() {
  constexpr float kLoudness = 0.01F;
  std::vector<float> samples(kSampleRateHz / 2);
  std::minstd_rand random;
  std::uniform_real_distribution<float> sample(-kLoudness, kLoudness);
  for (float& each : samples) each = sample(random);
  return samples;
}

int threadsFor(int wanted) {
  return wanted > 0 ? wanted : physicalCores(kCpuFolder);
}

/// What computes, for one line. Within a process the module stays the same.
std::string description(const fs::path& module, int threads) {
  std::string text = std::string("whisper.cpp ") + whisper_version();
  for (std::size_t at = 0; at < ggml_backend_dev_count(); ++at) {
    text += std::string(at == 0 ? " on " : ", ") +
            ggml_backend_dev_description(ggml_backend_dev_get(at));
  }
  text += ", " + std::to_string(threads) + (threads == 1 ? " thread" : " threads");
  return text + (module.empty() ? ", " QUILLBACK_WHISPER_CODE : ", code for " + kindOf(module));
}

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

/// A product of matrices like those of a model's encoder, ready to be computed.
/// Thread: one.  Owns: what the library needs for it.
class MatrixProduct {
 public:
  explicit MatrixProduct(int threads)
      : backend_(ggml_backend_init_by_type(GGML_BACKEND_DEVICE_TYPE_CPU, nullptr)),
        context_(ggml_init({kContextBytes, nullptr, true})) {
    if (!backend_ || !context_) return;
    ggml_tensor* const weights = ggml_new_tensor_2d(context_.get(), GGML_TYPE_F16, kWidth, kWidth);
    ggml_tensor* const sound =
        ggml_new_tensor_2d(context_.get(), GGML_TYPE_F32, kWidth, kPositions);
    graph_ = ggml_new_graph(context_.get());
    ggml_build_forward_expand(graph_, ggml_mul_mat(context_.get(), weights, sound));
    buffer_.reset(ggml_backend_alloc_ctx_tensors(context_.get(), backend_.get()));
    if (!buffer_) return;
    ggml_backend_buffer_clear(buffer_.get(), 0);
    ggml_backend_reg_t registry =
        ggml_backend_dev_backend_reg(ggml_backend_get_device(backend_.get()));
    auto setThreads = reinterpret_cast<ggml_backend_set_n_threads_t>(
        ggml_backend_reg_get_proc_address(registry, "ggml_backend_set_n_threads"));
    if (setThreads != nullptr) setThreads(backend_.get(), threads);
  }

  bool compute() {
    return buffer_ && ggml_backend_graph_compute(backend_.get(), graph_) == GGML_STATUS_SUCCESS;
  }

 private:
  static constexpr int kWidth = 1024;
  static constexpr int kPositions = 512;
  static constexpr std::size_t kContextBytes = std::size_t{1} << 20;

  Handle<ggml_backend, ggml_backend_free> backend_;
  Handle<ggml_context, ggml_free> context_;
  Handle<ggml_backend_buffer, ggml_backend_buffer_free> buffer_;
  ggml_cgraph* graph_ = nullptr;
};

/// Whether a process lives through a computation with this code. The program must have one thread.
bool survives(int variant) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::prctl(PR_SET_DUMPABLE, 0);  // no core file
    prepareLibrary(variant);
    ::_exit(MatrixProduct(1).compute() ? 0 : 1);
  }
  int status = 0;
  return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

/// The best code that does not end the process; that of the library itself where it has no modules.
int usableVariant() {
  const int count = processorVariants();
  if (count == 1) return 0;
  static const int kVariant = [count] {
    int variant = 0;
    while (variant < count && !survives(variant)) ++variant;
    return variant;
  }();
  return kVariant;
}

}  // namespace

std::optional<double> measureProcessor() {
  constexpr int kRounds = 12;
  constexpr double kReferenceSeconds = 0.0080;  // with two cores of 2.5 GHz and AVX-512
  prepareLibrary(usableVariant());
  const int threads = physicalCores(kCpuFolder);
  MatrixProduct product(threads);
  if (!product.compute()) return std::nullopt;
  // The processor's time, shared by the threads: other programs that run meanwhile do not count.
  std::clock_t best = std::numeric_limits<std::clock_t>::max();
  for (int round = 0; round < kRounds; ++round) {
    const std::clock_t start = std::clock();
    product.compute();
    best = std::min(best, std::clock() - start);
  }
  return static_cast<double>(best) / CLOCKS_PER_SEC / threads / kReferenceSeconds;
}

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

std::string usingLine(const std::string& kind, const RecogniserOptions& options) {
  return "Using " + kind + ". It runs in " +
         description(prepareLibrary(options.processorVariant), options.threads);
}

bool isFlagSet(void* flag) {
  return static_cast<const std::atomic<bool>*>(flag)->load();
}

tl::expected<void, std::string> loadChecked(
    const RecogniserOptions& options, const std::function<bool()>& load,
    const std::function<void(std::span<const float>)>& recognise) {
  prepareLibrary(options.processorVariant);
  if (ggml_backend_dev_by_type(GGML_BACKEND_DEVICE_TYPE_CPU) == nullptr) {
    return tl::make_unexpected("the library has no code for this processor");
  }
  // The library throws on what the check does not find, for example too little memory.
  const auto isLoaded = [&load] {
    try {
      return load();
    } catch (const std::exception&) {
      return false;
    }
  };
  return checkWeights(options.weightsFile, options.family).and_then([&] {
    if (!isLoaded()) {
      return tl::expected<void, std::string>(tl::unexpect,
                                             "it is damaged, or there is too little memory");
    }
    if (processorVariants() > 1) recognise(trialSound());
    return tl::expected<void, std::string>();
  });
}

int processorVariants() {
  return std::max(1, static_cast<int>(processorModules(moduleFolder()).size()));
}

bool isWhisperBuiltIn() {
  return true;
}

std::unique_ptr<RecogniserBackend> makeWhisperBackend(const RecogniserOptions& options) {
  RecogniserOptions complete = options;
  complete.threads = threadsFor(complete.threads);
  return std::make_unique<PiecewiseBackend>(
      makeModel(complete),
      [file = complete.voiceDetectionFile]() -> std::unique_ptr<VoiceDetector> {
        return SileroDetector::load(file);
      });
}

std::string describeWhisper(int threads) {
  return description(prepareLibrary(usableVariant()), threadsFor(threads));
}

}  // namespace voxtrel::quillback
