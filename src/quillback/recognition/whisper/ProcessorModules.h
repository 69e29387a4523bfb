#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace voxtrel::quillback {

/// Where the library's modules are: code for kinds of processors and for graphics cards. Empty if the library
/// was built for this processor, without modules.
std::filesystem::path moduleFolder();

/// The files in `folder` with code for kinds of processors, by name.
std::vector<std::filesystem::path> processorModules(const std::filesystem::path& folder);

/// The module with the highest score but `skipped`; empty if there are too few. `score` is 0 for a module
/// that cannot run on this processor. Of modules with the same score the one with the first name is first.
std::filesystem::path bestModule(const std::vector<std::filesystem::path>& modules, int skipped,
                                 const std::function<int(const std::filesystem::path&)>& score);

/// Loads the library's modules from `folder`: all for graphics cards, and the best for this processor after
/// `skipped` better ones. Returns that one; empty if there is none, or if the library has its code within.
/// Thread: one, once.
std::filesystem::path loadModules(const std::filesystem::path& folder, int skipped);

}  // namespace voxtrel::quillback
