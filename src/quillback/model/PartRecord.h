#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// What is known of a download that is under way; kept in a small file beside it, as JSON with the
/// members "sha256", "etag" and "last_modified".
struct PartRecord {
  std::string sha256;  ///< of the whole file, as pinned
  std::string etag;    ///< as the server gave them; either may be empty
  std::string lastModified;

  bool operator==(const PartRecord&) const = default;
};

/// Longest record that is read.
inline constexpr std::size_t kMaxPartRecordBytes = 16'384;

/// Nothing unless it is whole, and its texts may stand in a request's head.
std::optional<PartRecord> parsePartRecord(std::string_view text);
std::string formatPartRecord(const PartRecord& record);

/// Whether `value` may stand in a request's head: short, and printable.
bool isHeaderValue(std::string_view value);

}  // namespace voxtrel::quillback
