#include "quillback/model/PartRecord.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "quillback/model/Manifest.h"

namespace voxtrel::quillback {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kMaxValueBytes = 512;

std::optional<std::string> valueOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  std::string value = found->get<std::string>();
  if (!isHeaderValue(value)) return std::nullopt;
  return value;
}

}  // namespace

bool isHeaderValue(std::string_view value) {
  return value.size() <= kMaxValueBytes &&
         std::ranges::all_of(value, [](char c) { return c >= ' ' && c < '\x7f'; });
}

std::optional<PartRecord> parsePartRecord(std::string_view text) {
  if (text.size() > kMaxPartRecordBytes) return std::nullopt;
  const Json json = Json::parse(text, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  const auto sha256 = valueOf(json, "sha256");
  const auto etag = valueOf(json, "etag");
  const auto lastModified = valueOf(json, "last_modified");
  if (!sha256 || !isSha256(*sha256) || !etag || !lastModified) return std::nullopt;
  return PartRecord{*sha256, *etag, *lastModified};
}

std::string formatPartRecord(const PartRecord& record) {
  const Json json = {
      {"sha256", record.sha256}, {"etag", record.etag}, {"last_modified", record.lastModified}};
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace voxtrel::quillback
