#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace voxtrel {

/// A folder of the test's own, gone with everything in it when the test ends.
/// Thread: any.  Owns: the folder.  Borrows: nothing.
/// Fails by: an exception, which fails the test.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "voxtrel-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
    path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// Makes the folders on the way to `path`, which is below this one.
  std::filesystem::path prepare(std::string_view path) const {
    const std::filesystem::path whole = path_ / path;
    std::filesystem::create_directories(whole.parent_path());
    return whole;
  }

  std::filesystem::path write(std::string_view path, std::string_view bytes) const {
    const std::filesystem::path whole = prepare(path);
    std::ofstream file(whole, std::ios::binary);
    file << bytes;
    if (!file.flush()) throw std::runtime_error("cannot write " + whole.string());
    return whole;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace voxtrel
