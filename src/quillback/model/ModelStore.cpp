#include "quillback/model/ModelStore.h"

#include <sys/stat.h>

#include <variant>

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

std::string modelFolder(const std::string& home, const std::string& model) {
  return home + "/.local/share/quillback/weights/whisper-" + model;
}

StoreState inspectStore(const std::string& home, const std::string& model) {
  const std::string folder = modelFolder(home, model);
  const std::string path = folder + "/manifest.json";
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0) {
    return {StoreState::Kind::absent, {}, "there is no manifest.json"};
  }
  const std::optional<std::string> text = readSmallFile(path, kMaxManifestBytes + 1);
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
