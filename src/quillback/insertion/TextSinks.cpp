#include "quillback/insertion/TextSinks.h"

#include <utility>

#include "quillback/insertion/clipboard/X11Clipboard.h"
#include "quillback/insertion/x11/XTestTyper.h"

namespace voxtrel::quillback {
namespace {

/// The words are only printed.
/// Thread: the loop's.
class NoInsertion final : public TextSink {
 public:
  void insert(const std::string& /*text*/, OnInserted onInserted) override { onInserted(); }
};

/// Copies each dictation and shows a notification that says so.
/// Thread: the loop's.  Borrows: DesktopPrograms (must outlive this).
class CopiedText final : public TextSink {
 public:
  CopiedText(TextSinks::Copy copy, DesktopPrograms& programs)
      : copy_(std::move(copy)), programs_(programs) {}

  void insert(const std::string& text, OnInserted onInserted) override {
    copy_(text);
    programs_.notify("Copied: paste it where you want it", text);
    onInserted();
  }

 private:
  TextSinks::Copy copy_;
  DesktopPrograms& programs_;
};

/// Types each dictation into the window with the focus.
/// Thread: the loop's.  Owns: the typer.
class TypedText final : public TextSink {
 public:
  explicit TypedText(std::unique_ptr<XTestTyper> typer) : typer_(std::move(typer)) {}

  void insert(const std::string& text, OnInserted onInserted) override {
    typer_->type(text, std::move(onInserted));
  }

 private:
  std::unique_ptr<XTestTyper> typer_;
};

}  // namespace

std::unique_ptr<TextSink> TextSinks::make(EngineSettings::Insert insert, SessionKind session) {
  if (insert == EngineSettings::Insert::none) return std::make_unique<NoInsertion>();
  const bool canType = session == SessionKind::x11;
  const auto copy = clipboardOf(session);
  if (!copy) {
    output_.print("[quillback] Words are only printed: there is no desktop to copy them to");
    return std::make_unique<NoInsertion>();
  }
  auto copying = std::make_unique<CopiedText>(copy, programs_);
  if (insert == EngineSettings::Insert::clipboard || !canType) return copying;
  auto typer = XTestTyper::open(loop_, ownKeys_,
                                [this, copy](const std::string& text, const std::string& why) {
                                  copy(text);
                                  reportCopiedRest(why);
                                });
  if (typer) return std::make_unique<TypedText>(std::move(*typer));
  output_.print("[quillback] Words are not typed but copied: " + typer.error());
  return copying;
}

TextSinks::Copy TextSinks::clipboardOf(SessionKind session) {
  if (session == SessionKind::wayland) {
    return [this](const std::string& text) { programs_.copy(text); };
  }
  const std::shared_ptr clipboard = X11Clipboard::open(loop_);
  if (!clipboard) return nullptr;
  return [clipboard](const std::string& text) { clipboard->put(text); };
}

void TextSinks::reportCopiedRest(const std::string& why) {
  output_.print("[quillback] What was not typed is copied: " + why);
  programs_.notify("What was not typed is copied: paste it where you want it",
                   "It was not typed because " + why + ".");
}

}  // namespace voxtrel::quillback
