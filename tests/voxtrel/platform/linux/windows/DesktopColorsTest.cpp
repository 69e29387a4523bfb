#include <gtest/gtest.h>

#include <utility>

#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/FormStyle.h"

namespace voxtrel {
namespace {

TEST(DarkPalette, makesEveryTextReadable) {
  const QPalette dark = darkPalette();
  using Pair = std::pair<QPalette::ColorRole, QPalette::ColorRole>;
  for (const auto& [text, background] :
       {Pair{QPalette::WindowText, QPalette::Window}, Pair{QPalette::Text, QPalette::Base},
        Pair{QPalette::ButtonText, QPalette::Button},
        Pair{QPalette::HighlightedText, QPalette::Highlight},
        Pair{QPalette::PlaceholderText, QPalette::Base}}) {
    EXPECT_GE(contrast(dark.color(text), dark.color(background)), kReadableContrast) << text;
  }
}

}  // namespace
}  // namespace voxtrel
