#pragma once

#include <unistd.h>

#include "support/ScratchFolder.h"
#include "support/X11Fixture.h"

namespace voxtrel::quillback {

/// A test in which another program pastes.
class PasteFixture : public X11Fixture {
 protected:
  /// What another program pastes while our loop runs.
  std::string pasted(const std::string& target = "UTF8_STRING") {
    const ScratchFolder folder;
    const std::string file = folder.path() / "pasted";
    const test::RunningProgram paste({"sh", "-c",
                                      "xclip -o -selection clipboard -t '" + target + "' > " +
                                          file + " 2>&1; touch " + file + ".done"});
    EXPECT_TRUE(runUntil([&] { return access((file + ".done").c_str(), F_OK) == 0; }));
    return test::outputOf("cat " + file);
  }
};

}  // namespace voxtrel::quillback
