#include "quillback/model/ModelStore.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "common/settings/ConfigManager.h"
#include "quillback/model/Files.h"

namespace voxtrel::quillback {

namespace {

namespace fs = std::filesystem;

tl::unexpected<StoreFault> fault(StoreFault::Kind kind, std::string why) {
  return tl::unexpected(StoreFault{kind, std::move(why)});
}

/// What is wrong with one of the manifest's files.
std::optional<std::string> checkFile(const std::string& folder, const Manifest::File& file) {
  const std::optional<std::uint64_t> sizeBytes = fileSize(folder + "/" + file.name);
  if (!sizeBytes) return file.name + " is missing";
  if (*sizeBytes == file.sizeBytes) return std::nullopt;
  return file.name + " has " + std::to_string(*sizeBytes) + " bytes instead of " +
         std::to_string(file.sizeBytes);
}

/// Fails by: one sentence, without a full stop.
tl::expected<Manifest, std::string> loadManifest(const std::string& home,
                                                 const std::string& model) {
  const auto text =
      readSmallFile(ConfigManager(home).weightsManifestPath(model), kMaxManifestBytes + 1);
  if (!text) return tl::make_unexpected("manifest.json cannot be read");
  auto manifest = parseManifest(*text);
  if (!manifest) return tl::make_unexpected("manifest.json is damaged: " + manifest.error());
  if (manifest->model != model) {
    return tl::make_unexpected("manifest.json belongs to another model");
  }
  return manifest;
}

/// The second file, if it is there with its size.
std::string voiceDetectionIn(const std::string& folder, const Manifest& manifest) {
  if (manifest.files.size() < 2 || checkFile(folder, manifest.files[1])) return {};
  return folder + "/" + manifest.files[1].name;
}

}  // namespace

tl::expected<StoredModel, StoreFault> inspectStore(const std::string& home,
                                                   const std::string& model) {
  const ConfigManager config(home);
  if (!config.weightsExist(model))
    return fault(StoreFault::Kind::absent, "there is no manifest.json");
  const auto manifest = loadManifest(home, model);
  if (!manifest) return fault(StoreFault::Kind::damaged, manifest.error());
  if (!manifest->chosen.empty()) {
    return fault(StoreFault::Kind::absent, manifest->chosen + " was set up in its place");
  }
  const std::optional<ModelFamily> family = familyOf(manifest->recogniser);
  if (!family) return fault(StoreFault::Kind::embedded, "it was set up by a build without Whisper");

  const std::string folder = config.weightsFolder(model);
  if (auto wrong = checkFile(folder, manifest->files.front()))
    return fault(StoreFault::Kind::damaged, std::move(*wrong));
  return StoredModel{folder + "/" + manifest->files.front().name,
                     voiceDetectionIn(folder, *manifest), *family, *manifest};
}

std::optional<Manifest> readManifest(const std::string& home, const std::string& model) {
  if (!ConfigManager(home).weightsExist(model)) return std::nullopt;
  auto manifest = loadManifest(home, model);
  return manifest ? std::optional(std::move(*manifest)) : std::nullopt;
}

std::vector<std::string> customModels(const std::string& home) {
  const fs::path pattern(ConfigManager(home).weightsFolder(""));
  const std::string prefix = pattern.filename();
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator folders(pattern.parent_path(), error);
  for (; !error && folders != fs::directory_iterator(); folders.increment(error)) {
    const std::string folder = folders->path().filename();
    if (!folder.starts_with(prefix)) continue;
    const std::string name = folder.substr(prefix.size());
    const auto manifest = isModelName(name) ? readManifest(home, name) : std::nullopt;
    if (manifest && manifest->isCustom) names.push_back(name);
  }
  std::ranges::sort(names);
  return names;
}

}  // namespace voxtrel::quillback
