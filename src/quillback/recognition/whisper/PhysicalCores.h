#pragma once

namespace voxtrel::quillback {

/// Where the kernel describes the processors.
inline constexpr const char* kCpuFolder = "/sys/devices/system/cpu";

/// How many cores there are, those which run several threads counted once, from a folder laid out as
/// kCpuFolder. Without such a description, the processors that the system counts; at least 1.
int physicalCores(const char* cpuFolder);

}  // namespace voxtrel::quillback
