#include "quillback/insertion/TextSinks.h"

#include <functional>
#include <utility>

#include "quillback/insertion/clipboard/X11Clipboard.h"
#include "quillback/insertion/x11/XTestTyper.h"

namespace voxtrel::quillback {
namespace {

/// The words are only printed.
/// Thread: the loop's.
class NoInsertion final : public TextSink {
 public:
  void insert(const std::string& /*text*/) override {}
};

/// Copies each dictation and shows a notification that says so.
/// Thread: the loop's.  Borrows: DesktopPrograms (must outlive this).
class CopiedText final : public TextSink {
 public:
  using Copy = std::function<void(const std::string& text)>;

  CopiedText(Copy copy, DesktopPrograms& programs) : copy_(std::move(copy)), programs_(programs) {}

  void insert(const std::string& text) override {
    copy_(text);
    programs_.notify("Copied: paste it where you want it", text);
  }

 private:
  Copy copy_;
  DesktopPrograms& programs_;
};

/// Types each dictation into the window with the focus. The typer uses `fallback` for what it refuses.
/// Thread: the loop's.  Owns: the typer, the fallback.
class TypedText final : public TextSink {
 public:
  TypedText(std::unique_ptr<XTestTyper> typer, std::unique_ptr<TextSink> fallback)
      : fallback_(std::move(fallback)), typer_(std::move(typer)) {}

  void insert(const std::string& text) override { typer_->type(text); }

 private:
  std::unique_ptr<TextSink> fallback_;
  std::unique_ptr<XTestTyper> typer_;
};

}  // namespace

std::unique_ptr<TextSink> TextSinks::make(EngineSettings::Insert insert, SessionKind session) {
  if (insert == EngineSettings::Insert::none) return std::make_unique<NoInsertion>();
  const bool canType = session == SessionKind::x11;
  auto copying = makeCopying(session);
  if (insert == EngineSettings::Insert::clipboard || !canType) return copying;
  auto typer = XTestTyper::open(
      loop_, ownKeys_,
      [fallback = copying.get()](const std::string& text, const std::string& /*why*/) {
        fallback->insert(text);
      });
  if (typer) return std::make_unique<TypedText>(std::move(*typer), std::move(copying));
  output_.print("[quillback] Words are not typed but copied: " + typer.error());
  return copying;
}

std::unique_ptr<TextSink> TextSinks::makeCopying(SessionKind session) {
  if (session == SessionKind::wayland) {
    return std::make_unique<CopiedText>([this](const std::string& text) { programs_.copy(text); },
                                        programs_);
  }
  const std::shared_ptr clipboard = X11Clipboard::open(loop_);
  if (clipboard) {
    return std::make_unique<CopiedText>(
        [clipboard](const std::string& text) { clipboard->put(text); }, programs_);
  }
  output_.print("[quillback] Words are only printed: there is no desktop to copy them to");
  return std::make_unique<NoInsertion>();
}

}  // namespace voxtrel::quillback
