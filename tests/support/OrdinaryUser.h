#pragma once

#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace voxtrel::testing {

/// If root runs the test, makes it an ordinary user, to whom permissions apply, until this is gone.
/// Thread: any; the whole process changes.  Fails by: an exception, which fails the test.
class OrdinaryUser {
 public:
  /// `folder` becomes that user's.
  explicit OrdinaryUser(const std::filesystem::path& folder) {
    if (::geteuid() != 0) return;
    constexpr uid_t kNobody = 65534;
    if (::chown(folder.c_str(), kNobody, static_cast<gid_t>(-1)) != 0 || ::seteuid(kNobody) != 0) {
      throw std::runtime_error("cannot become an ordinary user");
    }
    changed_ = true;
  }
  ~OrdinaryUser() {
    if (changed_ && ::seteuid(0) != 0) ::_exit(1);
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  bool changed_ = false;
};

}  // namespace voxtrel::testing
