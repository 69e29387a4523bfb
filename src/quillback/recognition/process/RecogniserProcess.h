#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quillback/recognition/RecogniserBackend.h"
#include "quillback/recognition/process/RecogniserChild.h"

namespace voxtrel::quillback {

/// How long the recogniser's process may take.
struct RecogniserLimits {
  std::chrono::milliseconds drop{200};  ///< to leave an utterance that is not wanted
  std::chrono::milliseconds load{std::chrono::minutes(5)};
  /// From the end of an utterance to its text; longer if `answerPerSound` times its length is.
  std::chrono::milliseconds answer{std::chrono::seconds(60)};
  int answerPerSound = 20;
};

/// A backend in a child process, because a library may abort, use an instruction that the processor
/// lacks, take all memory or never return. It keeps the sound of the running utterance: if the child
/// ends, another one is started and gets all of it. If that one ends too, or cannot load, the
/// fallback recognises this utterance and all later ones. Nothing wakes between utterances.
/// Thread: one, which must live as long as this: the child dies with the thread that started it.
/// Owns: the child, the fallback once it is needed.
/// Fails by: a line for the user, in the load report or in the next Transcription.
class RecogniserProcess final : public RecogniserBackend {
 public:
  using MakeBackend = std::function<std::unique_ptr<RecogniserBackend>()>;

  /// `command`: a program that calls `serveRecogniser` on its standard input, and its arguments.
  /// Without `makeFallback` a load that fails is not usable, and later failures give empty text.
  /// `variants`: how many kinds of processors the program has code for. Where there are several, the
  /// command's last argument is the kind to use, 0 is the best; after an illegal instruction it is the
  /// next.
  RecogniserProcess(std::vector<std::string> command, MakeBackend makeFallback,
                    RecogniserLimits limits = {}, int variants = 1);
  RecogniserProcess(const RecogniserProcess&) = delete;
  RecogniserProcess& operator=(const RecogniserProcess&) = delete;
  ~RecogniserProcess() override = default;

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override;
  /// Does not wait for the child: what that cannot take yet is sent later.
  void feed(std::span<const std::int16_t> samples) override;
  Transcription finish() override;
  /// Waits for the child to leave the utterance, and replaces a child that does not.
  void drop() override;
  /// Ends the child; the next utterance starts another.
  void rest() override;

 private:
  /// One utterance, and how much of it the child has.
  struct Take {
    std::vector<std::int16_t> samples;
    std::size_t sent = 0;  ///< samples
    bool isBegun = false;
    bool isFinished = false;  ///< by the caller
    bool isFinishSent = false;
    bool mayRestart = true;  ///< no child has ended over it yet
  };

  bool isWanted() const { return isDropped_ != nullptr && !*isDropped_; }
  void startChild();
  std::optional<Transcription> step(std::chrono::milliseconds limit);
  void sendTake();
  std::optional<Message> nextToSend();
  std::optional<Transcription> handle(const Message& message);
  void handleLoaded(const Message& message);
  void setAnswerDeadline();
  bool isLate() const { return deadline_ && std::chrono::steady_clock::now() >= *deadline_; }
  void replaceChild(const std::string& problem);
  void useFallback(const std::string& problem);
  void feedFallback(std::span<const std::int16_t> samples);
  void leaveTake();
  Transcription withLines(Transcription result);

  const std::vector<std::string> command_;
  const MakeBackend makeFallback_;
  const RecogniserLimits limits_;
  const int variants_;
  int variant_ = 0;
  std::unique_ptr<RecogniserChild> child_;  ///< null while resting, and with the fallback
  std::optional<LoadReport> loaded_;        ///< by this child
  std::optional<std::chrono::steady_clock::time_point> deadline_;  ///< for the child's next answer
  bool usesFallback_ = false;
  std::unique_ptr<RecogniserBackend> fallback_;   ///< null if it cannot be loaded either
  const std::atomic<bool>* isDropped_ = nullptr;  ///< set during an utterance
  Take take_;
  std::vector<std::string> lines_;  ///< not yet shown to the user
};

}  // namespace voxtrel::quillback
