#pragma once

#include <string>
#include <string_view>

namespace voxtrel {

/// Puts a file with these bytes in the place of whatever is at `path`, with the mode and, as far as the user
/// may give it, the owner of the file that was there. It is written to `path`.tmp first, to the disk, and a
/// link in that place is not followed. Each step runs whether or not the one before it succeeded: if the new
/// file cannot be written, the old one is still removed.
/// Thread: one.
/// Fails by: a missing file, or no change.
void saveFile(const std::string& path, std::string_view bytes);

}  // namespace voxtrel
