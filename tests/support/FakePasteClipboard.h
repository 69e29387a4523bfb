#pragma once

#include <string>
#include <utility>
#include <vector>

#include "quillback/ports/PasteClipboard.h"

namespace voxtrel::quillback::test {

/// A clipboard that answers when the test says so.
struct FakePasteClipboard final : PasteClipboard {
  explicit FakePasteClipboard(Loop& time) : loop(time) {}

  void read(OnContent onContent) override {
    ++reads;
    if (isSlow) {
      reading = std::move(onContent);
    } else {
      onContent(content);
    }
  }
  ClipboardContent stopReading() override {
    reading = nullptr;
    return part;
  }
  void offer(ClipboardContent offered, OnOffered onOffered, OnRead reader) override {
    content = std::move(offered);
    onRead = std::move(reader);
    isOurs = true;
    if (answersOffers && onOffered) onOffered(takesOffers);
  }
  bool holdsOffer() const override { return isOurs; }
  bool seesReads() const override { return tellsReads; }
  bool isWatched() const override { return isWatchedByDesktop; }

  /// The text that another program would get; empty without one.
  std::string text() const { return content.empty() ? "" : content.front().second; }
  /// Another program copies.
  void copyElsewhere(const std::string& copied) {
    content = {{"text/plain", copied}};
    isOurs = false;
    onRead = nullptr;
  }
  /// Another program reads; returns what it gets.
  std::string readElsewhere(const std::string& type = "text/plain;charset=utf-8") const {
    const std::string got = text();
    if (const OnRead reader = onRead; reader && tellsReads) reader(type, loop.now());
    return got;
  }

  Loop& loop;
  ClipboardContent content;
  ClipboardContent part;  ///< what has come of a slow one
  bool isSlow = false;
  bool answersOffers = true;
  bool takesOffers = true;
  bool tellsReads = true;
  bool isWatchedByDesktop = false;
  bool isOurs = false;
  int reads = 0;
  OnContent reading;
  OnRead onRead;
};

}  // namespace voxtrel::quillback::test
