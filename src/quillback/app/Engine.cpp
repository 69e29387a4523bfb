#include "quillback/app/Engine.h"

#include <utility>

#include "common/base/HomeDirectory.h"
#include "quillback/app/ChosenBackend.h"
#include "quillback/recognition/ThreadedRecogniser.h"
#include "quillback/text/TextRules.h"

namespace voxtrel::quillback {

Engine::Engine(EpollLoop& loop, Output& output, const EngineSettings& settings)
    : loop_(loop),
      output_(output),
      ownKeys_(loop),
      lock_(loop, session_),
      sinks_(loop, ownKeys_, lock_, output),
      advice_(loop, output, homeDirectory()),
      missing_(output, [this](const std::string& title,
                              const std::string& body) { sinks_.notify(title, body); }),
      sink_(std::make_unique<ReplacingSink>(sinks_.make(settings, session_), settings.replace)),
      dictation_(loop, microphone_, *sink_, takes_, lock_, output),
      key_(loop, output, ownKeys_,
           {[this] { dictation_.keyPressed(); }, [this] { dictation_.keyReleased(); },
            [this] { dictation_.keyCancelled(); }},
           {[this] { seeKey(); }, [this](const std::string& text) { missing_.keyIsMissing(text); },
            [this](const std::string& title, const std::string& body) {
              sinks_.notify(title, body);
            }}),
      search_(loop, {[this] { findMicrophone(); },
                     [this](const std::string& text) { missing_.microphoneIsMissing(text); }}) {
  key_.watch(session_, settings.hotkey);
  loadModel(settings);
}

void Engine::seeKey() {
  missing_.keyIsSeen();
  dictation_.keySeen();
}

void Engine::findMicrophone() {
  missing_.microphoneIsThere();
  dictation_.microphoneFound();
}

void Engine::loadModel(const EngineSettings& settings) {
  recogniser_ = std::make_unique<ThreadedRecogniser>(
      loop_, makeBackend(settings, homeDirectory()),
      [this, settings](const LoadReport& report) {
        for (const std::string& line : report.lines) output_.print(line);
        if (report.isUsable) {
          dictation_.modelLoaded(*recogniser_);
          missing_.modelIsLoaded();
          return advice_.giveIfNeeded(settings);
        }
        exitStatus_ = 1;
        loop_.stop();
      },
      settings.unloadAfter);
}

}  // namespace voxtrel::quillback
