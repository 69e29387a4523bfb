#include "quillback/app/RecogniserChoice.h"

namespace voxtrel::quillback {
namespace {

std::string problemOf(const StoreState& store) {
  switch (store.kind) {
    case StoreState::Kind::absent:
      return "The weights of Whisper are missing";
    case StoreState::Kind::embedded:
      return "The weights of Whisper were never fetched: setup was run before Whisper was built in";
    case StoreState::Kind::damaged:
      return "The weights of Whisper are damaged (" + store.why + ")";
    case StoreState::Kind::complete:
      break;
  }
  return {};
}

}  // namespace

std::string embeddedLine(const std::string& language) {
  if (language == "auto" || language == "en") return "Using the embedded English recogniser";
  return "Using the embedded English recogniser; other languages need Whisper";
}

RecogniserChoice chooseRecogniser(bool isWhisperBuiltIn, const StoreState& store,
                                  const std::string& language) {
  if (!isWhisperBuiltIn) return {false, embeddedLine(language)};
  if (store.kind == StoreState::Kind::complete) return {true, {}};
  return {false, whisperErrorLine(problemOf(store))};
}

std::string whisperErrorLine(const std::string& problem) {
  return "[quillback] ERROR " + problem +
         ". Run \"quillback setup --model large-v3\". Until then the embedded English recogniser "
         "is "
         "used.";
}

}  // namespace voxtrel::quillback
