// What Apple's <spawn.h> has and glibc's has not.
#pragma once

#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000
