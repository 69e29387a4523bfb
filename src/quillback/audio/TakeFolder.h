#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "quillback/ports/TakeStore.h"

namespace voxtrel::quillback {

/// $XDG_RUNTIME_DIR/quillback, where recordings are kept until their words were delivered.
/// Fails by: empty text, if the variable is not an absolute path.
std::string takeFolderPath();

/// A recording that was kept, perhaps by another process.
/// Thread: one.
struct StoredTake {
  std::string path;  ///< of its WAV file
  std::unique_ptr<KeptTake> kept;
};

/// Keeps recordings as WAV files in a folder that only this user may read: take-1.wav and so on; one
/// without words becomes take-1-no-words.wav. At most kMaxFiles, the newest. The folder is in memory,
/// so a file is written at once: five minutes are 10 MB, which take some milliseconds. A file is locked
/// while a process recognises it.
/// Thread: one.  Owns: nothing; the files stay.
/// Fails by: null from `keep`.
class TakeFolder final : public TakeStore {
 public:
  static constexpr std::size_t kMaxFiles = 16;

  /// With an empty path nothing is kept.
  explicit TakeFolder(std::string path) : path_(std::move(path)) {}

  [[nodiscard]] std::unique_ptr<KeptTake> keep(std::span<const std::int16_t> samples) override;

  /// The kept recordings, the oldest first, without those that another process is recognising.
  std::vector<StoredTake> takes() const;

 private:
  void makeRoom() const;
  int nameDraft(const std::string& draft);

  std::string path_;
  int lastNumber_ = 0;  // not given again: handles go by names
};

}  // namespace voxtrel::quillback
