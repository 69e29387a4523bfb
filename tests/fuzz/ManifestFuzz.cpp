// Any bytes as a manifest, as a download's record and as a Content-Range: nothing breaks, and only valid
// input is accepted.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/FuzzEntry.h"
#include "quillback/model/Manifest.h"
#include "quillback/model/PartFile.h"
#include "quillback/model/RangeRules.h"

using namespace voxtrel::quillback;

namespace {

void require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", promise);
  std::abort();
}

void tryManifest(const std::string& text) {
  const auto manifest = parseManifest(text);
  if (!manifest) {
    require(manifest.error().starts_with("it "), "a refusal says why");
    return;
  }
  require(text.size() <= kMaxManifestBytes, "a manifest is short");
  require(familyOf(manifest->recogniser).has_value() != manifest->files.empty(),
          "only the embedded recogniser has no files");
  require(manifest->chosen.empty() || isModelName(manifest->chosen), "a choice is a name");
  for (const Manifest::File& file : manifest->files) {
    require(file.name.find('/') == std::string::npos && file.name != "..", "a name is no path");
    require(file.sha256.size() == 64, "a hash is whole");
  }
  const auto again = parseManifest(formatManifest(*manifest));
  require(again && *again == *manifest, "a manifest is read as it was written");
}

void tryRecord(const std::string& text) {
  const std::optional<PartRecord> record = parsePartRecord(text);
  if (!record) return;
  const std::string ifRange = ifRangeOf(record->etag, record->lastModified);
  require(ifRange.find_first_of("\r\n") == std::string::npos, "a request's head stays one line");
  require(parsePartRecord(formatPartRecord(*record)) == record, "a record is read as written");
}

void tryRange(const std::string& text) {
  const std::optional<ContentRange> range = parseContentRange(text);
  if (!range) return;
  require(range->first <= range->last && range->last < range->totalBytes, "a range is within");
  HttpReply reply{206, text, {}, {}, {}};
  const bool isTaken = judgeReply({400, 1000, ""}, reply) == ReplyAction::append;
  require(isTaken == (*range == ContentRange{400, 999, 1000}), "only the rest is appended");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  tryManifest(text);
  tryRecord(text);
  tryRange(text);
  return 0;
}
