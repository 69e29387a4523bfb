#pragma once

#include <QProcess>
#include <QTimer>
#include <functional>
#include <string>
#include <string_view>

namespace voxtrel {

/// Whether the engine can see the push-to-talk key, and what it says about that.
struct KeyAnswer {
  bool isSeen = true;
  std::string reason;  ///< why not: one sentence without its full stop; empty if unknown
};

/// What the end of `quillback check` means. Status 0 is yes and 1 is no; any other end is that of an
/// engine which does not know the question, and counts as yes: that engine says for itself what it
/// misses. `output`: its standard output.
KeyAnswer keyAnswer(bool hasExited, int status, std::string_view output);

/// Asks the engine `quillback check`, one question at a time.
/// Thread: the main thread, which must run Qt's event loop.  Owns: the engine's process, which ends
/// with this.
/// Fails by: yes, also if the engine does not end within six seconds.
class EngineCheck {
 public:
  /// `engine`: returns the path of its program.
  explicit EngineCheck(std::function<std::string()> engine);
  ~EngineCheck();
  EngineCheck(const EngineCheck&) = delete;
  EngineCheck& operator=(const EngineCheck&) = delete;

  /// `onReply` is called once for each question, later, unless this is gone by then. The first
  /// question is different: for half a second at most this waits, so that the reply of an engine that
  /// is quick comes before it returns. Must not be called before the reply to the last question.
  void ask(std::function<void(const KeyAnswer&)> onReply);

 private:
  void reply(const KeyAnswer& answer);

  const std::function<std::string()> engine_;
  std::function<void(const KeyAnswer&)> onReply_;  ///< null once called
  bool isFirst_ = true;
  QTimer limit_;
  QProcess process_;
};

}  // namespace voxtrel
