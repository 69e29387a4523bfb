#include "quillback/app/Engine.h"

#include <utility>

#include "common/base/HomeDirectory.h"
#include "common/posix/OwnFolder.h"
#include "quillback/app/ChosenBackend.h"
#include "quillback/keys/command/KeyCommands.h"
#include "quillback/recognition/ThreadedRecogniser.h"
#include "quillback/text/TextRules.h"

namespace voxtrel::quillback {

Engine::Engine(EpollLoop& loop, Output& output, const EngineSettings& settings)
    : loop_(loop),
      output_(output),
      ownKeys_(loop),
      sinks_(loop, ownKeys_, output),
      advice_(loop, output, homeDirectory()),
      sink_(std::make_unique<ReplacingSink>(sinks_.make(settings.insert, session_),
                                            settings.replace)),
      dictation_(loop, microphone_, *sink_, takes_, output),
      key_({[this] { dictation_.keyPressed(); }, [this] { dictation_.keyReleased(); },
            [this] { dictation_.keyCancelled(); }}) {
  watchKey(settings.hotkey);
  takeCommands();
  loadModel(settings);
}

void Engine::watchKey(const Hotkey& hotkey) {
  keyLine_ = keyLine(hotkey, findKeySource(session_, hotkey));
  auto source = openKeySource(session_, hotkey, key_.addSource(), ownKeys_, loop_, [this, hotkey] {
    const std::string why = "the X server is gone";
    keyLine_ = keyLine(hotkey, tl::unexpected(why));
    output_.print(noKeySourceLine(hotkey, why));
  });
  if (!source) return output_.print(noKeySourceLine(hotkey, source.error()));
  keyWatch_ = std::move(*source);
}

void Engine::takeCommands() {
  const std::string path = keyCommandPath();
  if (path.empty() || !makeOwnFolder(takeFolderPath())) return;
  KeyCommands::Callbacks callbacks{[] {}, [this] { return keyLine_; }};
  keyCommands_ = KeyCommands::open(path, key_.addSource(), std::move(callbacks), loop_);
}

void Engine::loadModel(const EngineSettings& settings) {
  recogniser_ = std::make_unique<ThreadedRecogniser>(
      loop_, makeBackend(settings, homeDirectory()),
      [this, settings](const LoadReport& report) {
        for (const std::string& line : report.lines) output_.print(line);
        if (report.isUsable) {
          dictation_.modelLoaded(*recogniser_);
          return advice_.giveIfNeeded(settings);
        }
        exitStatus_ = 1;
        loop_.stop();
      },
      settings.unloadAfter);
}

}  // namespace voxtrel::quillback
