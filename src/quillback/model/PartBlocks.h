#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/posix/FileDescriptor.h"
#include "quillback/model/Files.h"

namespace voxtrel::quillback {

/// Bytes of a part, from `begin` to before `end`, and their SHA-256 as they were received.
struct PartBlock {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  std::string sha256;

  bool operator==(const PartBlock&) const = default;
};

/// Longer files are read up to here.
inline constexpr std::size_t kMaxPartBlocksBytes = 1 << 20;

/// One line: the three members with blanks between them.
std::string formatPartBlock(const PartBlock& block);
/// The blocks of a file of such lines, up to the first line that is damaged or goes back.
std::vector<PartBlock> parsePartBlocks(std::string_view text);

/// The file FILE.part.blocks, which grows with the part. A line that a crash left out or cut makes a few
/// bytes unverified; a line that does not fit the part shows that the part has changed on the disk.
/// Thread: one.  Owns: the open file.  Fails by: the system's error.
class PartBlocks {
 public:
  explicit PartBlocks(std::string path) : path_(std::move(path)) {}

  /// Reads the file; a missing one has no blocks.
  void read();
  const std::vector<PartBlock>& blocks() const { return blocks_; }
  [[nodiscard]] FileResult add(PartBlock block);
  /// Forgets the blocks that reach beyond `end`.
  [[nodiscard]] FileResult cut(std::uint64_t end);

 private:
  [[nodiscard]] FileResult openToAppend();
  [[nodiscard]] FileResult rewrite();

  const std::string path_;
  std::vector<PartBlock> blocks_;
  bool hasOther_ = false;  ///< the file holds more than `blocks_`
  FileDescriptor file_;
};

}  // namespace voxtrel::quillback
