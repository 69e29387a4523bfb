#pragma once

#include "quillback/insertion/x11/XTestTyper.h"
#include "quillback/ports/TextSink.h"

namespace voxtrel::quillback {

/// Types each dictation into the window that has the focus; what cannot be typed is copied instead.
/// Thread: the loop's.  Owns: the typer, where to copy.
class TypedText final : public TextSink {
 public:
  struct Opened {
    std::unique_ptr<TypedText> sink;      ///< nothing where nothing can be typed
    std::unique_ptr<TextSink> otherwise;  ///< then what was handed in
    std::string why;                      ///< and the reason, for people
  };

  [[nodiscard]] static Opened open(Loop& loop, OwnKeys& ownKeys,
                                   std::unique_ptr<TextSink> otherwise);

  void insert(const std::string& text) override { typer_->type(text); }

 private:
  std::unique_ptr<TextSink> otherwise_;
  std::unique_ptr<XTestTyper> typer_;
};

}  // namespace voxtrel::quillback
