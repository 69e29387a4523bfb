#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// The folder of the state files, made if it is missing. May be absent all the same, where it cannot be made.
std::string makeStateFolder();

/// A short text that the engine keeps for its next start, in a file of this user only:
/// $XDG_STATE_HOME/quillback/NAME, else ~/.local/state/quillback/NAME.
/// Thread: one.
/// Fails by: no text; false from `write`.
class StateFile {
 public:
  explicit StateFile(std::string_view name);

  std::optional<std::string> read() const;
  /// Replaces the whole file in one step.
  [[nodiscard]] bool write(std::string_view text) const;
  bool exists() const { return read().has_value(); }
  void remove() const;

 private:
  std::string folder_;
  std::string path_;
};

}  // namespace voxtrel::quillback
