#pragma once

#include <string>

namespace voxtrel {

/// Whether `path` is a folder that only this user may enter. Makes the folder if it is missing and takes
/// the others' rights away if it is ours; its parent must exist.
/// Thread: any.
[[nodiscard]] bool makeOwnFolder(const std::string& path);

}  // namespace voxtrel
