#include "quillback/model/PartFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include <nlohmann/json.hpp>

#include "quillback/model/Manifest.h"
#include "quillback/model/RangeRules.h"

namespace voxtrel::quillback {

namespace {

using Json = nlohmann::json;

constexpr std::uint64_t kWriteBackBytes = 32 << 20;

std::optional<std::string> headerValueOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  std::string value = found->get<std::string>();
  return isHeaderValue(value) ? std::optional(std::move(value)) : std::nullopt;
}

}  // namespace

std::optional<PartRecord> parsePartRecord(std::string_view text) {
  if (text.size() > kMaxPartRecordBytes) return std::nullopt;
  const Json json = Json::parse(text, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  const auto sha256 = headerValueOf(json, "sha256");
  const auto etag = headerValueOf(json, "etag");
  const auto lastModified = headerValueOf(json, "last_modified");
  if (!sha256 || !isSha256(*sha256) || !etag || !lastModified) return std::nullopt;
  return PartRecord{*sha256, *etag, *lastModified};
}

std::string formatPartRecord(const PartRecord& record) {
  const Json json = {
      {"sha256", record.sha256}, {"etag", record.etag}, {"last_modified", record.lastModified}};
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

PartFile::PartFile(std::string folder, const std::string& fileName)
    : folder_(std::move(folder)), name_(fileName + ".part") {}

FileResult PartFile::open() {
  file_ = FileDescriptor(
      ::open(path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kFileMode));
  struct stat found {};
  if (!file_.isOpen() || ::fstat(file_.get(), &found) != 0) return systemFailure();
  if (!S_ISREG(found.st_mode)) return systemFailure(EINVAL);
  sizeBytes_ = static_cast<std::uint64_t>(found.st_size);
  const auto text = readSmallFile(folder_ + "/" + recordName(), kMaxPartRecordBytes + 1);
  if (text) record_ = parsePartRecord(*text).value_or(PartRecord());
  return {};
}

FileResult PartFile::hashAll(const StopSignals& stop) {
  hash_.reset();
  return hashFile(file_.get(), hash_, stop);
}

FileResult PartFile::append(std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t written =
        ::pwrite(file_.get(), bytes.data(), bytes.size(), static_cast<off_t>(sizeBytes_));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return systemFailure();
    const auto count = static_cast<std::size_t>(written);
    hash_.add(bytes.first(count));
    sizeBytes_ += count;
    bytes = bytes.subspan(count);
  }
  writeBackEarly();
  return {};
}

FileResult PartFile::writeRecord(const PartRecord& record) {
  auto written = replaceFile(folder_, recordName(), formatPartRecord(record));
  if (written) record_ = record;
  return written;
}

FileResult PartFile::clear() {
  record_ = PartRecord();
  if (::ftruncate(file_.get(), 0) != 0) return systemFailure();
  hash_.reset();
  sizeBytes_ = 0;
  writtenBackBytes_ = 0;
  return removeFile(folder_ + "/" + recordName());
}

FileResult PartFile::sync() {
  if (::fsync(file_.get()) != 0) return systemFailure();
  return {};
}

/// Starts writing to the disk while bytes arrive. Otherwise the sync at the end, which no signal
/// interrupts, would have gigabytes to write.
void PartFile::writeBackEarly() {
  if (sizeBytes_ - writtenBackBytes_ < kWriteBackBytes) return;
  ::sync_file_range(file_.get(), static_cast<off_t>(writtenBackBytes_),
                    static_cast<off_t>(sizeBytes_ - writtenBackBytes_), SYNC_FILE_RANGE_WRITE);
  writtenBackBytes_ = sizeBytes_;
}

}  // namespace voxtrel::quillback
