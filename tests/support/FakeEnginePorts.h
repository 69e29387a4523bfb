#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quillback/ports/Microphone.h"
#include "quillback/ports/Output.h"
#include "quillback/ports/Recogniser.h"
#include "quillback/ports/ScreenLock.h"
#include "quillback/ports/TakeStore.h"
#include "quillback/ports/TextSink.h"

namespace voxtrel::quillback::test {

/// Keeps the lines.
struct FakeOutput final : Output {
  void print(std::string_view line) override { lines.emplace_back(line); }
  /// The lines since the last call.
  std::vector<std::string> take() { return std::exchange(lines, {}); }

  std::vector<std::string> lines;
};

/// Keeps the open captures with their listeners.
struct FakeMicrophone final : Microphone {
  struct OpenCapture final : Capture {
    OpenCapture(std::vector<OpenCapture*>& open, Listener callbacks)
        : allOpen(open), listener(std::move(callbacks)) {
      allOpen.push_back(this);
    }
    OpenCapture(const OpenCapture&) = delete;
    OpenCapture& operator=(const OpenCapture&) = delete;
    ~OpenCapture() override { std::erase(allOpen, this); }

    std::vector<OpenCapture*>& allOpen;
    Listener listener;
  };

  std::unique_ptr<Capture> open(Listener listener) override {
    ++openings;
    return std::make_unique<OpenCapture>(captures, std::move(listener));
  }
  /// Feeds the newest open capture a square wave of this level.
  void feed(std::size_t samples, std::int16_t level) const {
    std::vector<std::int16_t> tone(samples, level);
    for (std::size_t i = 0; i < samples; i += 2) tone[i] = static_cast<std::int16_t>(-level);
    captures.back()->listener.onSamples(tone);
  }
  /// The oldest open capture fails.
  void fail(const std::string& why) const { captures.front()->listener.onFailure(why); }

  int openings = 0;
  std::vector<OpenCapture*> captures;
};

/// Keeps what its utterances are fed; the test gives the results.
struct FakeRecogniser final : Recogniser {
  struct OpenUtterance final : Utterance {
    explicit OpenUtterance(FakeRecogniser& by) : recogniser(by) {}
    OpenUtterance(const OpenUtterance&) = delete;
    OpenUtterance& operator=(const OpenUtterance&) = delete;
    ~OpenUtterance() override { recogniser.utterance = nullptr; }

    void feed(std::span<const std::int16_t> samples) override {
      fed.insert(fed.end(), samples.begin(), samples.end());
    }
    void finish(std::function<void(Transcription)> onDone) override { done = std::move(onDone); }

    FakeRecogniser& recogniser;
    std::vector<std::int16_t> fed;
    std::function<void(Transcription)> done;
  };

  std::unique_ptr<Utterance> begin() override {
    hasOverlapped = hasOverlapped || utterance != nullptr;
    ++beginnings;
    auto next = std::make_unique<OpenUtterance>(*this);
    utterance = next.get();
    return next;
  }
  bool isFinishing() const { return utterance != nullptr && utterance->done; }
  /// Gives the result, upon which the utterance may be destroyed.
  void understand(const std::string& text, const std::vector<std::string>& lines = {}) const {
    const auto done = std::move(utterance->done);
    done({text, std::chrono::microseconds(400), std::chrono::microseconds(123'456), lines});
  }

  int beginnings = 0;
  bool hasOverlapped = false;  ///< an utterance began while another existed
  OpenUtterance* utterance = nullptr;
};

/// Keeps the texts, and the lines that were printed before each.
struct FakeTextSink final : TextSink {
  explicit FakeTextSink(const FakeOutput& printed) : output(printed) {}
  void insert(const std::string& text, OnInserted onInserted) override {
    if (onInsert) onInsert();
    texts.push_back(text);
    linesBefore.push_back(output.lines);
    if (isSlow) {
      waiting.push_back(std::move(onInserted));
    } else {
      onInserted();
    }
  }

  const FakeOutput& output;
  std::vector<std::string> texts;
  std::vector<std::vector<std::string>> linesBefore;
  std::function<void()> onInsert;
  bool isSlow = false;  ///< the insertions end by `waiting`
  std::vector<OnInserted> waiting;
};

struct FakeScreenLock final : ScreenLock {
  bool isLocked() override { return locked; }
  bool locked = false;
};

/// Keeps the recordings, and what became of each.
struct FakeTakeStore final : TakeStore {
  enum class State { kept, delivered, gaveNoWords };
  struct Take {
    std::vector<std::int16_t> samples;
    State state = State::kept;
  };
  struct Handle final : KeptTake {
    explicit Handle(Take& kept) : take(kept) {}
    void delivered() override { take.state = State::delivered; }
    void gaveNoWords() override { take.state = State::gaveNoWords; }

    Take& take;
  };

  std::unique_ptr<KeptTake> keep(std::span<const std::int16_t> samples) override {
    if (isFull) return nullptr;
    takes.push_back({{samples.begin(), samples.end()}});
    return std::make_unique<Handle>(takes.back());
  }

  std::deque<Take> takes;
  bool isFull = false;
};

}  // namespace voxtrel::quillback::test
