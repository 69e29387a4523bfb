#include "quillback/insertion/TextSinks.h"

#include <utility>

#include "quillback/insertion/x11/XTestTyper.h"

namespace voxtrel::quillback {
namespace {

/// The words are only printed.
/// Thread: the loop's.
class NoInsertion final : public TextSink {
 public:
  void insert(const std::string& /*text*/, OnInserted onInserted) override { onInserted(); }
};

/// Only prints the words until there is a desktop to insert them into.
/// Thread: the loop's.  Owns: the desktop's sink, once there is one.
class UntilDesktop final : public TextSink {
 public:
  using Make = std::function<std::unique_ptr<TextSink>()>;

  /// `make` gives null without a desktop.
  explicit UntilDesktop(Make make) : make_(std::move(make)) {}

  void insert(const std::string& text, OnInserted onInserted) override {
    if (!sink_) sink_ = make_();
    if (sink_) return sink_->insert(text, std::move(onInserted));
    onInserted();
  }

 private:
  Make make_;
  std::unique_ptr<TextSink> sink_;
};

/// Copies each dictation and shows a notification that says so.
/// Thread: the loop's.  Borrows: Notifier (must outlive this).
class CopiedText final : public TextSink {
 public:
  CopiedText(TextSinks::Copy copy, Notifier& notifier, bool showsText)
      : copy_(std::move(copy)), notifier_(notifier), showsText_(showsText) {}

  void insert(const std::string& text, OnInserted onInserted) override {
    copy_(text);
    notifier_.notify("Copied: paste it where you want it", showsText_ ? text : std::string());
    onInserted();
  }

 private:
  TextSinks::Copy copy_;
  Notifier& notifier_;
  const bool showsText_;
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

/// Types each dictation into the Wayland window with the focus, as long as the compositor lets it;
/// otherwise leaves it to the other sink.
/// Thread: the loop's.  Owns: the other sink.  Borrows: WaylandInsertion (must outlive this).
class TypedUnderWayland final : public TextSink {
 public:
  TypedUnderWayland(WaylandInsertion& wayland, std::unique_ptr<TextSink> otherwise)
      : wayland_(wayland), otherwise_(std::move(otherwise)) {}

  void insert(const std::string& text, OnInserted onInserted) override {
    if (!wayland_.canType()) return otherwise_->insert(text, std::move(onInserted));
    wayland_.type(text, std::move(onInserted));
  }

 private:
  WaylandInsertion& wayland_;
  std::unique_ptr<TextSink> otherwise_;
};

/// Pastes each dictation by the desktop's portal, as long as that lets us; otherwise leaves it to the other
/// sink.
/// Thread: the loop's.  Owns: the other sink.  Borrows: PortalPaste (must outlive this).
class PastedText final : public TextSink {
 public:
  PastedText(PortalPaste& paste, std::unique_ptr<TextSink> otherwise)
      : paste_(paste), otherwise_(std::move(otherwise)) {}

  void insert(const std::string& text, OnInserted onInserted) override {
    if (!paste_.paste(text, onInserted)) otherwise_->insert(text, std::move(onInserted));
  }

 private:
  PortalPaste& paste_;
  std::unique_ptr<TextSink> otherwise_;
};

}  // namespace

TextSinks::TextSinks(Loop& loop, OwnKeys& ownKeys, ScreenLock& lock, Output& output)
    : loop_(loop),
      ownKeys_(ownKeys),
      lock_(lock),
      output_(output),
      programs_(loop, output),
      notifier_(loop, output),
      wayland_(loop,
               [this](const std::string& text, const std::string& why) { copyRest(text, why); }),
      wlCopyClipboard_(programs_, loop),
      paste_(loop,
             {[this] { return wayland_.clipboard(); },
              [this](std::uint32_t symbol, int usual) { return wayland_.keyOf(symbol, usual); },
              [this]() -> PasteClipboard& { return lastClipboard(); }, lock_,
              [this](const std::string& text, const std::string& why) { copyRest(text, why); },
              [this] { reportQuestion(); }, [this] { reportRefusedConsent(); }}) {}

std::unique_ptr<TextSink> TextSinks::make(const EngineSettings& settings, SessionKind session) {
  if (settings.insert == EngineSettings::Insert::none) return std::make_unique<NoInsertion>();
  if (auto sink = makeOnDesktop(settings, session)) return sink;
  output_.print("[quillback] Words are only printed: there is no desktop to copy them to");
  return std::make_unique<UntilDesktop>(
      [this, settings, session] { return makeOnDesktop(settings, session); });
}

std::unique_ptr<TextSink> TextSinks::makeOnDesktop(const EngineSettings& settings,
                                                   SessionKind session) {
  const auto copy = clipboardOf(session);
  if (!copy) return nullptr;
  auto copying = std::make_unique<CopiedText>(copy, notifier_, settings.notifyText);
  if (settings.insert == EngineSettings::Insert::clipboard) return copying;
  if (session == SessionKind::wayland) {
    if (!wayland_.canType()) paste_.open(settings.paste);
    auto pasting = std::make_unique<PastedText>(paste_, std::move(copying));
    return std::make_unique<TypedUnderWayland>(wayland_, std::move(pasting));
  }
  auto typer = XTestTyper::open(loop_, ownKeys_, lock_,
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
    return [this](const std::string& text) {
      if (wayland_.copy(text) || paste_.copy(text)) return;
      const bool isXWaylands = xwaylandsClipboard_ && &lastClipboard() == xwaylandsClipboard_.get();
      isXWaylands ? xwaylandsClipboard_->put(text) : programs_.copy(text);
    };
  }
  const std::shared_ptr clipboard = X11Clipboard::open(loop_);
  if (!clipboard) return nullptr;
  return [clipboard](const std::string& text) { clipboard->put(text); };
}

/// GNOME keeps XWayland's clipboard the same as its own, and takes it without a window that has the focus.
PasteClipboard& TextSinks::lastClipboard() {
  if (!xwaylandsClipboard_ || !xwaylandsClipboard_->isConnected()) {
    xwaylandsClipboard_ = X11Clipboard::open(loop_);
  }
  if (xwaylandsClipboard_ && xwaylandsClipboard_->isDesktops()) return *xwaylandsClipboard_;
  return wlCopyClipboard_;
}

std::string describeInsertion(const EngineSettings& settings, SessionKind session, Loop& loop,
                              const std::function<bool()>& hasRemoteDesktop) {
  using enum EngineSettings::Insert;
  const EngineSettings::Insert insert = settings.insert;
  if (insert == none) return "only printed, as the settings say";
  std::string copied = "copied";
  if (session == SessionKind::wayland) {
    WaylandInsertion wayland(loop, [](const std::string&, const std::string&) {});
    if (insert == type && wayland.canType()) return "typed on a virtual keyboard";
    if (insert == type && hasRemoteDesktop()) {
      const std::string key(pasteKeyName(settings.paste));
      if (!RemoteDesktop::isRefused()) return "pasted by the desktop's portal with " + key;
      copied = "not pasted, because you have refused it (\"quillback ask\" asks again), but copied";
    }
    copied += wayland.canCopy() ? " by the engine itself" : " with wl-copy";
  }
  if (insert == clipboard) return copied + ", as the settings say";
  return session == SessionKind::x11 ? "typed into the focused window" : copied;
}

void TextSinks::copyRest(const std::string& text, const std::string& why) {
  clipboardOf(SessionKind::wayland)(text);
  reportCopiedRest(why);
}

void TextSinks::reportQuestion() {
  output_.print("[quillback] The desktop asks whether words may be pasted");
  const bool isGnome = currentDesktopFamily() == DesktopFamily::gnome;
  const std::string answer = isGnome ? "switch remote interaction on, then share" : "press Share";
  notifier_.notify(
      "The desktop asks about remote control",
      "It is Voxtrel: " + answer + ". So your words are pasted; otherwise they are copied.");
}

void TextSinks::reportRefusedConsent() {
  output_.print(
      "[quillback] Words are copied from now on, because you have refused to let them be pasted. "
      "\"quillback ask\" has the desktop ask again");
  notifier_.notify("Words are copied from now on",
                   "To let the desktop ask again whether they may be pasted, run: quillback ask");
}

void TextSinks::reportCopiedRest(const std::string& why) {
  output_.print("[quillback] What was not typed is copied: " + why);
  notifier_.notify("What was not typed is copied: paste it where you want it",
                   "It was not typed because " + why + ".");
}

}  // namespace voxtrel::quillback
