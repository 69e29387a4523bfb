#pragma once

namespace voxtrel::quillback {

/// Where the kernel describes the processors.
inline constexpr const char* kCpuFolder = "/sys/devices/system/cpu";

/// Number of processor cores in `cpuFolder` (laid out as kCpuFolder); the hardware threads of a
/// core count once. Without a description the system's count of processors; at least 1.
int physicalCores(const char* cpuFolder);

/// Silences the library and loads its code for this processor, where that is kept in modules apart. To be
/// called before any weights are loaded.
/// Thread: one.
void prepareLibrary();

/// For the library's abort callbacks: whether `flag`, a `std::atomic<bool>`, is set.
bool isFlagSet(void* flag);

}  // namespace voxtrel::quillback
