#include "quillback/recognition/whisper/ProcessorModules.h"

#include <dlfcn.h>
#include <ggml-backend.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "common/base/Handle.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

/// The modules whose names begin so, by name.
std::vector<fs::path> modulesNamed(const fs::path& folder, const std::string& start) {
  std::vector<fs::path> found;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.starts_with(start) && name.ends_with(".so")) found.push_back(entry->path());
  }
  std::ranges::sort(found);
  return found;
}

/// How well the module's code suits this processor, by its own function; 0 if it cannot run here.
int scoreOf(const fs::path& module) {
  const Handle<void, ::dlclose> library(::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) return 0;
  using Score = int (*)();
  const auto score = reinterpret_cast<Score>(::dlsym(library.get(), "ggml_backend_score"));
  return score == nullptr ? 0 : score();
}

}  // namespace

fs::path moduleFolder() {
  // Relative to the program, wherever that was installed.
  fs::path folder = QUILLBACK_GGML_MODULES;
  if (folder.empty() || folder.is_absolute()) return folder;
  std::error_code error;
  return (fs::read_symlink("/proc/self/exe", error).parent_path() / folder).lexically_normal();
}

std::vector<fs::path> processorModules(const fs::path& folder) {
  return modulesNamed(folder, "libggml-cpu");
}

fs::path bestModule(const std::vector<fs::path>& modules, int skipped,
                    const std::function<int(const fs::path&)>& score) {
  std::vector<std::pair<int, fs::path>> usable;
  for (const fs::path& module : modules) {
    if (const int points = score(module); points > 0) usable.emplace_back(points, module);
  }
  std::ranges::stable_sort(usable, std::greater(), &std::pair<int, fs::path>::first);
  const auto at = static_cast<std::size_t>(skipped);
  return at < usable.size() ? usable[at].second : fs::path();
}

fs::path loadModules(const fs::path& folder, int skipped) {
  // The library's own search would look into the current folder, where anybody may put a module.
  if (folder.empty() || ggml_backend_reg_count() > 0) return {};
  const auto processors = processorModules(folder);
  for (const fs::path& module : modulesNamed(folder, "libggml-")) {
    const bool isLibrary = module.filename() == "libggml-base.so";
    if (isLibrary || std::ranges::count(processors, module) > 0) continue;
    ggml_backend_load(module.c_str());
  }
  fs::path best = bestModule(processors, skipped, scoreOf);
  if (!best.empty()) ggml_backend_load(best.c_str());
  return best;
}

}  // namespace voxtrel::quillback
