#include "quillback/model/ModelStore.h"

#include <optional>

#include "common/settings/ConfigManager.h"
#include "quillback/model/Files.h"

namespace voxtrel::quillback {

namespace {

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

}  // namespace

tl::expected<StoredModel, StoreFault> inspectStore(const std::string& home,
                                                   const std::string& model) {
  const ConfigManager config(home);
  if (!config.weightsExist(model))
    return fault(StoreFault::Kind::absent, "there is no manifest.json");
  const std::string folder = config.weightsFolder(model);
  const std::optional<std::string> text =
      readSmallFile(config.weightsManifestPath(model), kMaxManifestBytes + 1);
  if (!text) return fault(StoreFault::Kind::damaged, "manifest.json cannot be read");

  const auto manifest = parseManifest(*text);
  if (!manifest)
    return fault(StoreFault::Kind::damaged, "manifest.json is damaged: " + manifest.error());
  if (manifest->model != model) {
    return fault(StoreFault::Kind::damaged, "manifest.json belongs to another model");
  }
  if (manifest->recogniser == kPocketSphinx) {
    return fault(StoreFault::Kind::embedded, "it was set up by a build without Whisper");
  }
  for (const Manifest::File& file : manifest->files) {
    if (auto wrong = checkFile(folder, file))
      return fault(StoreFault::Kind::damaged, std::move(*wrong));
  }
  return StoredModel{folder + "/" + manifest->files.front().name, *manifest};
}

}  // namespace voxtrel::quillback
