#include "common/posix/SpawnedProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <csignal>

extern char** environ;  // NOLINT(readability-redundant-declaration): missing in some headers

namespace voxtrel {
namespace {

/// The streams, descriptors and signals that the program starts with.
/// Thread: one.
class SpawnSetup {
 public:
  explicit SpawnSetup(int input) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    sigset_t none{};
    sigset_t all{};
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  /// Returns 0 or an errno.
  int spawn(pid_t& child, char* const* words) const {
    return posix_spawnp(&child, words[0], &actions_, &attributes_, words, environ);
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace

tl::expected<pid_t, std::error_code> spawnProgram(const std::vector<std::string>& words,
                                                  int input) {
  std::vector<std::string> copies = words;
  std::vector<char*> pointers;
  pointers.reserve(copies.size() + 1);
  for (std::string& copy : copies) pointers.push_back(copy.data());
  pointers.push_back(nullptr);
  pid_t child = 0;
  const int error = SpawnSetup(input).spawn(child, pointers.data());
  if (error != 0) return tl::unexpected(std::error_code(error, std::generic_category()));
  return child;
}

}  // namespace voxtrel
