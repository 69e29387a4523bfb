#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quillback/ports/TextSink.h"

namespace voxtrel::quillback {

/// What is inserted in place of a spoken phrase.
/// Thread: any, as a value.
struct TextRule {
  std::string phrase;
  std::string replacement;

  bool operator==(const TextRule&) const = default;
};

/// `text` with the phrases of the rules replaced. A phrase is found as whole words, in any case, with
/// any number of blanks between its words; the longest one counts. Text that was inserted is not
/// searched again.
///
/// A replacement that begins with a blank, a newline or a closing mark, or is empty, takes the blanks
/// before it away; one that ends with a blank, a newline or an opening bracket takes those after it. The
/// recogniser punctuates spoken commands too ("Yes, new line. No"): a mark behind a newline, a mark or
/// an empty replacement is dropped, and so is one before a mark.
std::string replaced(std::string_view text, const std::vector<TextRule>& rules);

/// `text` without invisible characters: the zero-width space, the byte order mark and those
/// that change the direction of writing.
std::string withoutInvisible(std::string_view text);

/// What a recogniser's text is printed and inserted as: one line of UTF-8 without these characters, and
/// without blanks at its ends.
std::string oneLineOfWords(std::string_view text);

/// Applies the rules to each text before it is inserted. A text of which nothing is left is not
/// inserted.
/// Thread: the loop's.  Owns: the sink that it hands the texts to.
class ReplacingSink final : public TextSink {
 public:
  ReplacingSink(std::unique_ptr<TextSink> sink, std::vector<TextRule> rules)
      : sink_(std::move(sink)), rules_(std::move(rules)) {}

  void insert(const std::string& text, OnInserted onInserted) override {
    const std::string result = replaced(text, rules_);
    if (result.empty()) return onInserted();
    sink_->insert(result, std::move(onInserted));
  }

 private:
  const std::unique_ptr<TextSink> sink_;
  const std::vector<TextRule> rules_;
};

}  // namespace voxtrel::quillback
