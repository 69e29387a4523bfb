#include <gtest/gtest.h>

#include "quillback/dictation/PrintedLines.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;

TEST(PrintedLinesTest, TheLengthIsInTenthsOfASecond) {
  EXPECT_EQ(processingLine(0), "Processing 0.0s audio");
  EXPECT_EQ(processingLine(36'800), "Processing 2.3s audio");
  EXPECT_EQ(processingLine(36'000), "Processing 2.3s audio");
  EXPECT_EQ(processingLine(35'999), "Processing 2.2s audio");
  EXPECT_EQ(processingLine(4'800'000), "Processing 300.0s audio");
}

TEST(PrintedLinesTest, QuotesInTheTextAreNotEscaped) {
  EXPECT_EQ(textLine("say \"yes\""), "[gpu-decode] text: \"say \"yes\"\"");
}

TEST(PrintedLinesTest, WordsThatNameAStateAreRecognised) {
  for (const char* words : {"Ready. Go.", "Recording...", "encode=1", "Processing audio"}) {
    EXPECT_TRUE(saysState(words)) << words;
  }
  for (const char* words : {"", "ready. Ready", "Recording", "Processing", "audio", "encode"}) {
    EXPECT_FALSE(saysState(words)) << words;
  }
}

TEST(PrintedLinesTest, TimesAreInWholeMilliseconds) {
  EXPECT_EQ(timingLine(499us, 123'500us), "encode=0ms decode=124ms");
}

TEST(PrintedLinesTest, AFailedCaptureHasItsReason) {
  EXPECT_EQ(captureFailedLine("gone"), "Audio capture failed: gone");
}

}  // namespace
}  // namespace voxtrel::quillback
