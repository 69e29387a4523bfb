#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/posix/FileDescriptor.h"
#include "quillback/model/Files.h"

namespace voxtrel::quillback {

/// Which file a part is from. Stored beside the part as JSON with the members "sha256", "etag" and
/// "last_modified".
struct PartRecord {
  std::string sha256;  ///< of the whole file, as pinned
  std::string etag;    ///< as sent by the server; may be empty
  std::string lastModified;

  bool operator==(const PartRecord&) const = default;
};

/// Longer records are ignored.
inline constexpr std::size_t kMaxPartRecordBytes = 16'384;

/// Nothing unless all members are there and may be sent as header values.
std::optional<PartRecord> parsePartRecord(std::string_view text);
std::string formatPartRecord(const PartRecord& record);

/// A file that is being downloaded: FILE.part, the hash of its bytes and its record,
/// FILE.part.json.
/// Thread: one.  Owns: the open file.  Fails by: the system's error.
class PartFile {
 public:
  PartFile(std::string folder, const std::string& fileName);

  /// Opens the part, which is created if missing, and reads its record.
  [[nodiscard]] FileResult open();
  /// Reads the whole part, so that its hash is known.
  [[nodiscard]] FileResult hashAll(const StopSignals& stop);

  /// Appends `bytes`. What a full disk took before it failed counts as appended.
  [[nodiscard]] FileResult append(std::span<const char> bytes);
  [[nodiscard]] FileResult writeRecord(const PartRecord& record);
  /// Empties the part and removes its record.
  [[nodiscard]] FileResult clear();
  /// Waits until the part is on the disk.
  [[nodiscard]] FileResult sync();

  std::string path() const { return folder_ + "/" + name_; }
  std::uint64_t sizeBytes() const { return sizeBytes_; }
  /// All fields are empty if there is no valid record.
  const PartRecord& record() const { return record_; }
  /// SHA-256 of the whole part. Only after `hashAll` or `clear`.
  std::string digest() const { return hash_.digest(); }

 private:
  std::string recordName() const { return name_ + ".json"; }
  void writeBackEarly();

  const std::string folder_;
  const std::string name_;
  FileDescriptor file_;
  PartRecord record_;
  Sha256 hash_;
  std::uint64_t sizeBytes_ = 0;
  std::uint64_t writtenBackBytes_ = 0;
};

}  // namespace voxtrel::quillback
