#include "quillback/model/PartFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>
#include <vector>

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

bool hasValidator(const PartRecord& record) {
  return !ifRangeOf(record.etag, record.lastModified).empty();
}

PartFile::PartFile(std::string folder, const std::string& fileName)
    : folder_(std::move(folder)), name_(fileName + ".part"), blocks_(path() + ".blocks") {}

FileResult PartFile::open() {
  file_ = FileDescriptor(
      ::open(path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kFileMode));
  struct stat found {};
  if (!file_.isOpen() || ::fstat(file_.get(), &found) != 0) return systemFailure();
  if (!S_ISREG(found.st_mode)) return systemFailure(EINVAL);
  heldBytes_ = static_cast<std::uint64_t>(found.st_size);
  const auto text = readSmallFile(folder_ + "/" + recordName(), kMaxPartRecordBytes + 1);
  if (text) record_ = parsePartRecord(*text).value_or(PartRecord());
  blocks_.read();
  return {};
}

FileResult PartFile::verify(const StopSignals& stop) {
  restart();
  verifiedBytes_ = 0;
  return verifyBlocks(stop)
      .and_then([this] { return hasValidator(record_) ? FileResult() : cut(verifiedBytes_); })
      .and_then([&] { return catchUp(stop); })
      .map([this] { startBlock(); });
}

FileResult PartFile::verifyBlocks(const StopSignals& stop) {
  for (const PartBlock& block : std::vector<PartBlock>(blocks_.blocks())) {
    if (block.end > heldBytes_) return blocks_.cut(block.begin);
    if (auto read = readUpTo(block.begin, stop); !read) return read;
    startBlock();
    if (auto read = readUpTo(block.end, stop); !read) return read;
    if (block_.digest() != block.sha256) return cut(block.begin);
    if (block.begin == verifiedBytes_) verifiedBytes_ = block.end;
  }
  return {};
}

FileResult PartFile::catchUp(const StopSignals& stop) {
  if (!isComparing()) return {};
  return readUpTo(heldBytes_, stop).map([this] { startBlock(); });
}

FileResult PartFile::rewind(std::uint64_t sizeBytes, const StopSignals& stop) {
  if (sizeBytes_ > sizeBytes) restart();
  return readUpTo(sizeBytes, stop).map([this] { startBlock(); });
}

FileResult PartFile::readUpTo(std::uint64_t sizeBytes, const StopSignals& stop) {
  return readRange(file_.get(), sizeBytes_, sizeBytes, stop,
                   [this](std::span<const char> bytes) { take(bytes); });
}

/// How many of the first bytes are the ones that are held.
tl::expected<std::size_t, std::error_code> PartFile::sameBytes(std::span<const char> bytes) const {
  const std::uint64_t heldBeyond = heldBytes_ - sizeBytes_;
  std::vector<char> held(
      static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), heldBeyond)));
  std::size_t got = 0;
  while (got < held.size()) {
    const ssize_t count = ::pread(file_.get(), held.data() + got, held.size() - got,
                                  static_cast<off_t>(sizeBytes_ + got));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return systemFailure(count < 0 ? errno : EIO);
    got += static_cast<std::size_t>(count);
  }
  const auto [mine, theirs] = std::ranges::mismatch(held, bytes);
  return static_cast<std::size_t>(mine - held.begin());
}

tl::expected<bool, std::error_code> PartFile::fits(std::span<const char> bytes) const {
  return sameBytes(bytes).map([&](std::size_t same) {
    return same == std::min<std::uint64_t>(bytes.size(), heldBytes_ - sizeBytes_);
  });
}

FileResult PartFile::append(std::span<const char> bytes) {
  if (isComparing()) {
    const auto same = sameBytes(bytes);
    if (!same) return tl::unexpected(same.error());
    take(bytes.first(*same));
    bytes = bytes.subspan(*same);
    if (bytes.empty() && isComparing()) return {};
    if (auto replaced = endComparing(); !replaced) return replaced;
  }
  return write(bytes);
}

/// Drops what is held beyond the same bytes.
FileResult PartFile::endComparing() {
  if (!isComparing()) {
    startBlock();
    return {};
  }
  // The same bytes and the new ones are one block: they came together.
  return cut(sizeBytes_).and_then([this] { return blocks_.cut(blockBegin_); });
}

FileResult PartFile::write(std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t written =
        ::pwrite(file_.get(), bytes.data(), bytes.size(), static_cast<off_t>(sizeBytes_));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return systemFailure();
    const auto count = static_cast<std::size_t>(written);
    take(bytes.first(count));
    heldBytes_ = sizeBytes_;
    bytes = bytes.subspan(count);
  }
  writeBackEarly();
  return {};
}

void PartFile::take(std::span<const char> bytes) {
  hash_.add(bytes);
  block_.add(bytes);
  sizeBytes_ += bytes.size();
}

FileResult PartFile::sealBlock() {
  if (unsealedBytes() == 0) return {};
  auto added = blocks_.add({blockBegin_, sizeBytes_, block_.digest()});
  startBlock();
  return added;
}

void PartFile::startBlock() {
  block_.reset();
  blockBegin_ = sizeBytes_;
}

void PartFile::restart() {
  hash_.reset();
  sizeBytes_ = 0;
  startBlock();
}

FileResult PartFile::writeRecord(const PartRecord& record) {
  auto written = replaceFile(folder_, recordName(), formatPartRecord(record));
  if (written) record_ = record;
  return written;
}

FileResult PartFile::cut(std::uint64_t sizeBytes) {
  if (heldBytes_ <= sizeBytes) return {};
  if (::ftruncate(file_.get(), static_cast<off_t>(sizeBytes)) != 0) return systemFailure();
  heldBytes_ = sizeBytes;
  writtenBackBytes_ = std::min(writtenBackBytes_, sizeBytes);
  if (sizeBytes_ > sizeBytes) restart();
  return blocks_.cut(sizeBytes);
}

FileResult PartFile::clear() {
  record_ = PartRecord();
  if (::ftruncate(file_.get(), 0) != 0) return systemFailure();
  heldBytes_ = 0;
  writtenBackBytes_ = 0;
  restart();
  return blocks_.cut(0).and_then([this] { return removeFile(folder_ + "/" + recordName()); });
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
