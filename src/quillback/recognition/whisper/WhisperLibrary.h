#pragma once

namespace voxtrel::quillback {

/// Where the kernel describes the processors.
inline constexpr const char* kCpuFolder = "/sys/devices/system/cpu";

/// Number of processor cores in `cpuFolder` (laid out as kCpuFolder); the hardware threads of a
/// core count once. Without a description the system's count of processors; at least 1.
int physicalCores(const char* cpuFolder);

/// Loads the library's code for this processor, where it is kept in modules apart. Before any weights.
/// Thread: one.
void loadProcessorModules();

}  // namespace voxtrel::quillback
