#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/posix/FileDescriptor.h"
#include "quillback/model/Files.h"
#include "quillback/model/PartBlocks.h"

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

/// Whether the server said which version of the file it sends.
bool hasValidator(const PartRecord& record);

/// Nothing unless all members are there and may be sent as header values.
std::optional<PartRecord> parsePartRecord(std::string_view text);
std::string formatPartRecord(const PartRecord& record);

/// A file that is being downloaded: FILE.part, the hash of its bytes, its record FILE.part.json and the
/// hashes of its blocks, FILE.part.blocks. It is read from the disk or received up to `sizeBytes`; what
/// is held beyond that is compared with the bytes that come, and stays as long as they are the same.
/// Thread: one.  Owns: the open file.  Fails by: the system's error.
class PartFile {
 public:
  /// How many bytes a block has, roughly.
  static constexpr std::uint64_t kBlockBytes = 8 << 20;

  PartFile(std::string folder, const std::string& fileName);

  /// Opens the part, which is created if missing, and reads its record and its blocks.
  [[nodiscard]] FileResult open();
  /// Reads the whole part. Cuts it before the first block that has changed on the disk; without a
  /// validator, also where its verified bytes end.
  [[nodiscard]] FileResult verify(const StopSignals& stop);
  /// Reads what is held beyond `sizeBytes`: the next bytes continue the part.
  [[nodiscard]] FileResult catchUp(const StopSignals& stop);
  /// Goes back to the first `sizeBytes`; the rest is held.
  [[nodiscard]] FileResult rewind(std::uint64_t sizeBytes, const StopSignals& stop);

  /// Whether `bytes` are the ones that are held, as far as any are.
  [[nodiscard]] tl::expected<bool, std::error_code> fits(std::span<const char> bytes) const;
  /// Adds `bytes`; drops what is held from the first byte that differs. What a full disk took before
  /// it failed counts as added.
  [[nodiscard]] FileResult append(std::span<const char> bytes);
  /// Records the hash of what was received since the last block, so that a later setup can verify it.
  [[nodiscard]] FileResult sealBlock();
  [[nodiscard]] FileResult writeRecord(const PartRecord& record);
  /// Drops what is held beyond the first `sizeBytes`. `catchUp` must follow.
  [[nodiscard]] FileResult cut(std::uint64_t sizeBytes);
  /// Empties the part and removes its record and its blocks.
  [[nodiscard]] FileResult clear();
  /// Waits until the part is on the disk.
  [[nodiscard]] FileResult sync();

  std::string path() const { return folder_ + "/" + name_; }
  std::uint64_t sizeBytes() const { return sizeBytes_; }
  /// On the disk; `sizeBytes` or more.
  std::uint64_t heldBytes() const { return heldBytes_; }
  bool isComparing() const { return sizeBytes_ < heldBytes_; }
  /// The first bytes that are as they were received. Only after `verify`.
  std::uint64_t verifiedBytes() const { return verifiedBytes_; }
  std::uint64_t unsealedBytes() const { return isComparing() ? 0 : sizeBytes_ - blockBegin_; }
  /// All fields are empty if there is no valid record.
  const PartRecord& record() const { return record_; }
  /// SHA-256 of the first `sizeBytes`.
  std::string digest() const { return hash_.digest(); }

 private:
  std::string recordName() const { return name_ + ".json"; }
  FileResult readUpTo(std::uint64_t sizeBytes, const StopSignals& stop);
  FileResult verifyBlocks(const StopSignals& stop);
  FileResult write(std::span<const char> bytes);
  FileResult endComparing();
  tl::expected<std::size_t, std::error_code> sameBytes(std::span<const char> bytes) const;
  void take(std::span<const char> bytes);
  void restart();
  void startBlock();
  void writeBackEarly();

  const std::string folder_;
  const std::string name_;
  FileDescriptor file_;
  PartRecord record_;
  PartBlocks blocks_;
  Sha256 hash_;
  Sha256 block_;  ///< of the bytes from `blockBegin_` on
  std::uint64_t blockBegin_ = 0;
  std::uint64_t sizeBytes_ = 0;
  std::uint64_t heldBytes_ = 0;
  std::uint64_t verifiedBytes_ = 0;
  std::uint64_t writtenBackBytes_ = 0;
};

}  // namespace voxtrel::quillback
