#include "quillback/model/ModelStore.h"

#include <variant>

#include "common/settings/ConfigManager.h"
#include "quillback/model/Files.h"
#include "quillback/model/Manifest.h"

namespace voxtrel::quillback {

namespace {

StoreState damaged(std::string why) {
  return {StoreState::Kind::damaged, {}, std::move(why)};
}

/// What is wrong with one of the manifest's files; empty where nothing is.
std::string faultOf(const std::string& folder, const Manifest::File& file) {
  const std::optional<std::uint64_t> sizeBytes = fileSize(folder + "/" + file.name);
  if (!sizeBytes) return file.name + " is missing";
  if (*sizeBytes != file.sizeBytes) {
    return file.name + " has " + std::to_string(*sizeBytes) + " bytes instead of " +
           std::to_string(file.sizeBytes);
  }
  return {};
}

}  // namespace

StoreState inspectStore(const std::string& home, const std::string& model) {
  const ConfigManager config(home);
  if (!config.weightsExist(model)) {
    return {StoreState::Kind::absent, {}, "there is no manifest.json"};
  }
  const std::string folder = config.weightsFolder(model);
  const std::optional<std::string> text =
      readSmallFile(config.weightsManifestPath(model), kMaxManifestBytes + 1);
  if (!text) return damaged("manifest.json cannot be read");

  const std::variant<Manifest, std::string> parsed = parseManifest(*text);
  if (const auto* wrong = std::get_if<std::string>(&parsed)) {
    return damaged("manifest.json is damaged: " + *wrong);
  }
  const auto& manifest = std::get<Manifest>(parsed);
  if (manifest.model != model) return damaged("manifest.json belongs to another model");
  if (manifest.recogniser == kPocketSphinx) {
    return {StoreState::Kind::embedded, {}, "it was set up by a build without Whisper"};
  }
  for (const Manifest::File& file : manifest.files) {
    if (std::string fault = faultOf(folder, file); !fault.empty()) return damaged(std::move(fault));
  }
  return {StoreState::Kind::complete, folder + "/" + manifest.files.front().name, {}};
}

}  // namespace voxtrel::quillback
