#include "common/posix/Confinement.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "common/posix/FileDescriptor.h"

namespace voxtrel {
namespace {

bool isProtected = false;
int openings = 0;  ///< how many OpenToOthers live

void updateProtection() {
  if (isProtected) ::prctl(PR_SET_DUMPABLE, openings > 0 ? 1 : 0, 0, 0, 0);
}

bool isForDebugging() {
  return std::getenv("VOXTREL_CORE") != nullptr;
}

// Of later versions of Landlock than some systems' headers know.
constexpr std::uint64_t kRefer = 1ULL << 13;
constexpr std::uint64_t kTruncate = 1ULL << 14;

constexpr std::uint64_t kFileChanges = LANDLOCK_ACCESS_FS_WRITE_FILE;
constexpr std::uint64_t kFolderChanges =
    LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
    LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
    LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;

/// All changes that this kernel can forbid; 0 without Landlock.
std::uint64_t knownChanges() {
  const long version =
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return 0;
  constexpr long kWithRefer = 2;
  constexpr long kWithTruncate = 3;
  return kFileChanges | kFolderChanges | (version >= kWithRefer ? kRefer : 0) |
         (version >= kWithTruncate ? kTruncate : 0);
}

void allowChangesBelow(const std::string& folder, std::uint64_t changes, int rules) {
  const FileDescriptor parent(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!parent.isOpen()) return;
  const landlock_path_beneath_attr rule{.allowed_access = changes, .parent_fd = parent.get()};
  ::syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
}

}  // namespace

/// A limit of one byte also stops the kernel from handing the core to a program.
void leaveNoCore() {
  if (isForDebugging()) return;
  rlimit limit{};
  if (::getrlimit(RLIMIT_CORE, &limit) != 0 || limit.rlim_max == 0) return;
  limit.rlim_cur = 1;
  ::setrlimit(RLIMIT_CORE, &limit);
}

void protectMemory() {
  if (isForDebugging()) return;
  leaveNoCore();
  isProtected = true;
  updateProtection();
}

OpenToOthers::OpenToOthers() {
  if (openings++ == 0) updateProtection();
}

OpenToOthers::~OpenToOthers() {
  if (--openings == 0) updateProtection();
}

bool confineWriting(const std::vector<std::string>& folders) {
  // Landlock asks for this, too.
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return false;
  const std::uint64_t changes = knownChanges();
  if (changes == 0) return false;
  landlock_ruleset_attr handled{};  // newer headers know more members
  handled.handled_access_fs = changes;
  const FileDescriptor rules(
      static_cast<int>(::syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0)));
  if (!rules.isOpen()) return false;
  for (const std::string& folder : folders) allowChangesBelow(folder, changes, rules.get());
  return ::syscall(SYS_landlock_restrict_self, rules.get(), 0) == 0;
}

}  // namespace voxtrel
