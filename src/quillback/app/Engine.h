#pragma once

#include <memory>

#include "quillback/app/EngineKey.h"
#include "quillback/app/MicrophoneSearch.h"
#include "quillback/app/MissingParts.h"
#include "quillback/app/SlowModelAdvice.h"
#include "quillback/audio/PulseMicrophone.h"
#include "quillback/audio/TakeFolder.h"
#include "quillback/dictation/Dictation.h"
#include "quillback/insertion/TextSinks.h"
#include "quillback/lock/SessionLock.h"
#include "quillback/loop/EpollLoop.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// The parts of the running engine, put together for this desktop.
/// Thread: the loop's.  Owns: all parts.  Borrows: the loop, the output (must outlive this).
/// Fails by: a line of output for each part that does not work; the others do. Without any speech
/// model it stops the loop, with exit status 1.
class Engine {
 public:
  Engine(EpollLoop& loop, Output& output, const EngineSettings& settings);
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  int exitStatus() const { return exitStatus_; }

 private:
  void seeKey();
  void findMicrophone();
  void loadModel(const EngineSettings& settings);

  EpollLoop& loop_;
  Output& output_;
  int exitStatus_ = 0;
  const SessionKind session_ = currentSessionKind(SessionKind::x11);
  OwnKeys ownKeys_;
  SessionLock lock_;
  TextSinks sinks_;
  PulseMicrophone microphone_;
  TakeFolder takes_{takeFolderPath()};
  SlowModelAdvice advice_;
  MissingParts missing_;
  // Destroyed in reverse order: an utterance before its recogniser, the dictation before its sink.
  std::unique_ptr<TextSink> sink_;
  std::unique_ptr<Recogniser> recogniser_;
  Dictation dictation_;
  EngineKey key_;
  MicrophoneSearch search_;
};

}  // namespace voxtrel::quillback
