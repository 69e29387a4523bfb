#include "quillback/model/Manifest.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace voxtrel::quillback {

namespace {

using Json = nlohmann::json;

constexpr int kFormat = 1;
constexpr std::size_t kMaxNameBytes = 200;
constexpr std::size_t kMaxFiles = 64;
constexpr std::size_t kSha256Digits = 64;

std::optional<std::string> textOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

/// Non-negative integers only, written without a point or an exponent.
std::optional<std::uint64_t> countOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number_unsigned()) return std::nullopt;
  return found->get<std::uint64_t>();
}

std::optional<Manifest::File> fileOf(const Json& entry) {
  if (!entry.is_object()) return std::nullopt;
  const std::optional<std::string> name = textOf(entry, "name");
  const std::optional<std::uint64_t> sizeBytes = countOf(entry, "size");
  const std::optional<std::string> sha256 = textOf(entry, "sha256");
  if (!name || !isPlainFileName(*name) || !sizeBytes || !sha256 || !isSha256(*sha256)) {
    return std::nullopt;
  }
  return Manifest::File{*name, *sizeBytes, *sha256};
}

/// What is wrong if the files are not those that the recogniser needs.
std::optional<std::string> fileMismatch(const Manifest& manifest) {
  if (familyOf(manifest.recogniser)) {
    if (manifest.files.empty()) return "it names no weights";
    if (!manifest.chosen.empty()) return "it names weights and another model";
  } else if (manifest.recogniser == kPocketSphinx) {
    if (!manifest.files.empty()) return "it names weights that its recogniser does not have";
  } else {
    return "it names an unknown recogniser";
  }
  return std::nullopt;
}

/// Reads the members that a manifest may lack; false if one has a wrong value.
bool readOptional(const Json& json, Manifest& manifest) {
  if (const auto chosen = json.find("chosen"); chosen != json.end()) {
    if (!chosen->is_string() || !isModelName(chosen->get<std::string>())) return false;
    manifest.chosen = chosen->get<std::string>();
  }
  if (const auto custom = json.find("custom"); custom != json.end()) {
    if (!custom->is_boolean()) return false;
    manifest.isCustom = custom->get<bool>();
  }
  return true;
}

}  // namespace

bool isModelName(std::string_view name) {
  if (name.empty() || name.size() > kMaxModelNameBytes || name.front() == '.') return false;
  return std::ranges::all_of(name, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-' || c == '_';
  });
}

std::string_view recogniserOf(ModelFamily family) {
  return family == ModelFamily::parakeet ? kParakeet : kWhisper;
}

std::optional<ModelFamily> familyOf(std::string_view recogniser) {
  if (recogniser == kWhisper) return ModelFamily::whisper;
  if (recogniser == kParakeet) return ModelFamily::parakeet;
  return std::nullopt;
}

bool isPlainFileName(std::string_view name) {
  if (name.empty() || name.size() > kMaxNameBytes || name == "." || name == "..") return false;
  return std::ranges::none_of(name, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return c == '/' || byte < 0x20 || byte == 0x7f;
  });
}

bool isSha256(std::string_view text) {
  return text.size() == kSha256Digits && std::ranges::all_of(text, [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

tl::expected<Manifest, std::string> parseManifest(std::string_view text) {
  if (text.size() > kMaxManifestBytes) return tl::make_unexpected("it is too long");
  const Json json = Json::parse(text, nullptr, false);
  if (!json.is_object()) return tl::make_unexpected("it is not a JSON object");
  if (countOf(json, "format") != kFormat) return tl::make_unexpected("it has an unknown format");

  const std::optional<std::string> model = textOf(json, "model");
  const std::optional<std::string> recogniser = textOf(json, "recogniser");
  const std::optional<std::string> writtenBy = textOf(json, "written_by");
  if (!model || !recogniser || !writtenBy) return tl::make_unexpected("it lacks a member");

  Manifest manifest{*model, *recogniser, {}, *writtenBy};
  if (!readOptional(json, manifest)) return tl::make_unexpected("it has a member of a wrong kind");
  const auto files = json.find("files");
  if (files == json.end() || !files->is_array()) return tl::make_unexpected("it lacks a member");
  if (files->size() > kMaxFiles) return tl::make_unexpected("it names too many files");
  for (const Json& entry : *files) {
    const std::optional<Manifest::File> file = fileOf(entry);
    if (!file) return tl::make_unexpected("it describes a file wrongly");
    manifest.files.push_back(*file);
  }
  if (const std::optional<std::string> wrong = fileMismatch(manifest))
    return tl::make_unexpected(*wrong);
  return manifest;
}

std::string formatManifest(const Manifest& manifest) {
  Json files = Json::array();
  for (const Manifest::File& file : manifest.files) {
    files.push_back({{"name", file.name}, {"size", file.sizeBytes}, {"sha256", file.sha256}});
  }
  Json json = {{"format", kFormat},
               {"model", manifest.model},
               {"recogniser", manifest.recogniser},
               {"files", files},
               {"written_by", manifest.writtenBy}};
  if (!manifest.chosen.empty()) json["chosen"] = manifest.chosen;
  if (manifest.isCustom) json["custom"] = true;
  // Names that are not UTF-8 are written with replacement characters.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace voxtrel::quillback
