#pragma once

#include <openssl/evp.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include <tl/expected.hpp>

#include "common/base/Handle.h"
#include "common/posix/StopSignals.h"

namespace voxtrel::quillback {

/// The mode of new files, of which the user's umask takes its part.
inline constexpr mode_t kFileMode = 0666;

/// Fails by: the system's error; `operation_canceled` means that a stop was requested.
using FileResult = tl::expected<void, std::error_code>;

/// The failure with this errno.
inline tl::unexpected<std::error_code> systemFailure(int number = errno) {
  return tl::unexpected(std::error_code(number, std::generic_category()));
}

/// The SHA-256 of bytes that arrive in pieces.
/// Thread: one at a time.  Owns: the library's context.
/// Fails by: aborting when there is no memory.
class Sha256 {
 public:
  Sha256();

  void add(std::span<const char> bytes);
  /// Starts again with no bytes.
  void reset();
  /// 64 lower-case hexadecimal digits. More bytes may follow.
  std::string digest() const;

 private:
  Handle<EVP_MD_CTX, EVP_MD_CTX_free> context_;
};

/// Size of the regular file `path`, also through a symbolic link; nothing if there is none.
std::optional<std::uint64_t> fileSize(const std::string& path);
/// Up to `maxBytes` of the regular file `path`; nothing if it cannot be read. Never blocks on a
/// pipe.
std::optional<std::string> readSmallFile(const std::string& path, std::size_t maxBytes);
/// Adds all bytes of the open file `descriptor` to `hash`.
[[nodiscard]] FileResult hashFile(int descriptor, Sha256& hash, const StopSignals& stop);
/// Shows `take` the bytes of the file from `begin` to before `end`, in pieces.
/// Fails by: EIO too, if the file ends before.
[[nodiscard]] FileResult readRange(int descriptor, std::uint64_t begin, std::uint64_t end,
                                   const StopSignals& stop,
                                   const std::function<void(std::span<const char>)>& take);
/// Bytes that this user can still write below `folder`; nothing if unknown.
std::optional<std::uint64_t> freeSpace(const std::string& folder);

/// Writes all of `text` where the open file stands.
[[nodiscard]] FileResult writeAll(int descriptor, std::string_view text);
/// Creates `folder` and its missing parents.
[[nodiscard]] FileResult makeFolders(const std::string& folder);
/// Flushes renames and removals in `folder` to the disk.
[[nodiscard]] FileResult syncFolder(const std::string& folder);
/// Removes a file; a missing one is no failure.
[[nodiscard]] FileResult removeFile(const std::string& path);
/// Replaces folder/name atomically: readers see the old file or the whole new one. `mode`: the new
/// file's permissions; nothing: as the umask says.
[[nodiscard]] FileResult replaceFile(const std::string& folder, const std::string& name,
                                     std::string_view text,
                                     std::optional<mode_t> mode = std::nullopt);

}  // namespace voxtrel::quillback
