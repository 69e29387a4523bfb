#pragma once

#include "common/base/SessionKind.h"
#include "quillback/insertion/helpers/Helpers.h"
#include "quillback/keys/OwnKeys.h"
#include "quillback/ports/TextSink.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// Makes what the settings and the desktop allow. Under Wayland nothing can be typed into its own
/// windows, so the clipboard serves there.
/// Thread: the loop's.  Owns: the helper programs' handles.  Borrows: Loop, OwnKeys, Output (must
/// outlive this); this must outlive the sinks.
/// Fails by: a line of output, and a sink that does as much as it can.
class TextSinks {
 public:
  TextSinks(Loop& loop, OwnKeys& ownKeys, Output& output)
      : loop_(loop), ownKeys_(ownKeys), output_(output), helpers_(loop, output) {}

  [[nodiscard]] std::unique_ptr<TextSink> make(EngineSettings::Insert insert, SessionKind session);

 private:
  std::unique_ptr<TextSink> makeClipboard(SessionKind session);

  Loop& loop_;
  OwnKeys& ownKeys_;
  Output& output_;
  Helpers helpers_;
};

}  // namespace voxtrel::quillback
