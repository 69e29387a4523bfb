#include "quillback/recognition/whisper/PhysicalCores.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

std::optional<int> numberIn(const fs::path& file) {
  std::ifstream input(file);
  int number = 0;
  if (input >> number) return number;
  return std::nullopt;
}

bool isProcessor(const std::string& name) {
  return name.size() > 3 && name.starts_with("cpu") &&
         std::all_of(name.begin() + 3, name.end(),
                     [](unsigned char c) { return std::isdigit(c) != 0; });
}

}  // namespace

int physicalCores(const char* cpuFolder) {
  std::set<std::pair<int, int>> cores;  // package and number within it
  std::error_code error;
  for (fs::directory_iterator entry(cpuFolder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (!isProcessor(entry->path().filename().string())) continue;
    // A processor that is switched off has no topology.
    const fs::path topology = entry->path() / "topology";
    const auto core = numberIn(topology / "core_id");
    const auto package = numberIn(topology / "physical_package_id");
    if (core && package) cores.emplace(*package, *core);
  }
  if (!cores.empty()) return static_cast<int>(cores.size());
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

}  // namespace voxtrel::quillback
