#pragma once

#include <functional>
#include <span>
#include <string>

#include <tl/expected.hpp>

#include "quillback/recognition/Whisper.h"

namespace voxtrel::quillback {

/// Where the kernel describes the processors.
inline constexpr const char* kCpuFolder = "/sys/devices/system/cpu";

/// Number of processor cores in `cpuFolder` (laid out as kCpuFolder); the hardware threads of a
/// core count once. Without a description the system's count of processors; at least 1.
int physicalCores(const char* cpuFolder);

/// Prepares the library, walks through the weights and calls `load`, which says whether the library has them
/// in memory. Where there is code for several kinds of processors `recognise` then gets half a second of
/// sound, so that code which this processor refuses ends the process now and not at the first take.
/// Thread: one.
/// Fails by: half a sentence that says why the weights cannot be used.
tl::expected<void, std::string> loadChecked(
    const RecogniserOptions& options, const std::function<bool()>& load,
    const std::function<void(std::span<const float>)>& recognise);

/// Begins the line at the start: "Using " and the model's kind, and what runs it.
std::string usingLine(const std::string& kind, const RecogniserOptions& options);

/// For the library's abort callbacks: whether `flag`, a `std::atomic<bool>`, is set.
bool isFlagSet(void* flag);

}  // namespace voxtrel::quillback
