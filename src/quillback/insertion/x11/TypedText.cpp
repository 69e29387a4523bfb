#include "quillback/insertion/x11/TypedText.h"

#include <utility>

namespace voxtrel::quillback {

TypedText::Opened TypedText::open(Loop& loop, OwnKeys& ownKeys,
                                  std::unique_ptr<TextSink> otherwise) {
  auto sink = std::make_unique<TypedText>();
  auto [typer, why] = XTestTyper::open(
      loop, ownKeys, [self = sink.get()](const std::string& text, const std::string& /*why*/) {
        self->otherwise_->insert(text);
      });
  if (!typer) return {nullptr, std::move(otherwise), std::move(why)};
  sink->otherwise_ = std::move(otherwise);
  sink->typer_ = std::move(typer);
  return {std::move(sink), nullptr, ""};
}

}  // namespace voxtrel::quillback
