#include <QAccessible>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>

#include "voxtrel/platform/linux/windows/FormFixture.h"

namespace voxtrel::testing {
namespace {

constexpr std::string_view kProgress = "812.4 MB / 3094.1 MB (26.3%)\n";

class TheDownloadWindow : public FormFixture {
 protected:
  static QPlainTextEdit* log() { return dialog()->findChild<QPlainTextEdit*>(); }
  static QProgressBar* bar() { return visible<QProgressBar>().value(0); }
  static QPushButton* skip() { return withText<QPushButton>("&Skip (won't work without model)"); }
  static QPushButton* retry() { return withText<QPushButton>("&Retry"); }
  static QString amount() { return withText<QLabel>("812.4 MB / 3094.1 MB") ? "yes" : "no"; }

  static QList<QWidget*> everything() {
    QList<QWidget*> widgets;
    for (QLabel* const label : visible<QLabel>()) widgets << label;
    for (QProgressBar* const progress : visible<QProgressBar>()) widgets << progress;
    for (QPushButton* const button : visible<QPushButton>()) widgets << button;
    return widgets << log()->parentWidget();
  }

  static std::string lines(int first, int end) {
    std::string text;
    for (int number = first; number < end; ++number)
      text += "line " + std::to_string(number) + "\n";
    return text;
  }
  static bool eventuallyReads(const QString& newest) {
    return eventually([&] { return log()->document()->lastBlock().text() == newest; });
  }
  static bool newestIsInView() {
    const QScrollBar* const scrollBar = log()->verticalScrollBar();
    QTextCursor end(log()->document());
    end.movePosition(QTextCursor::End);
    const QRect place = log()->cursorRect(end);
    return scrollBar->value() == scrollBar->maximum() && place.top() >= 0 &&
           place.bottom() <= log()->viewport()->height();
  }
};

TEST_F(TheDownloadWindow, hasTheGivenTitleAndSize) {
  openDownload();
  EXPECT_EQ(dialog()->windowTitle(), "Voxtrel Setup");
  EXPECT_EQ(dialog()->size(), QSize(420, 340));
  EXPECT_EQ(dialog()->minimumSize(), dialog()->maximumSize());
}

TEST_F(TheDownloadWindow, showsBarAndLogWhileItDownloads) {
  openDownload();
  EXPECT_TRUE(withText<QLabel>("Voxtrel — Model Setup"));
  EXPECT_TRUE(withText<QLabel>("Downloading Whisper Large v3 (~3 GB)"));
  ASSERT_TRUE(bar());
  EXPECT_EQ(bar()->value(), 0);
  EXPECT_EQ(amount(), "no");
  EXPECT_EQ(log()->toPlainText(), "Connecting to HuggingFace...");
  EXPECT_FALSE(skip()->isEnabled());
  EXPECT_FALSE(retry());
}

TEST_F(TheDownloadWindow, showsTheAmountOnceItIsKnown) {
  openDownload();
  forms.print(kProgress);
  EXPECT_TRUE(eventually([] { return amount() == "yes"; }));
  EXPECT_NEAR(static_cast<double>(bar()->value()) / bar()->maximum(), 0.263, 0.0005);
  EXPECT_TRUE(areApart(everything(), *dialog()));
}

TEST_F(TheDownloadWindow, showsAFullBarAndDoneAtTheEnd) {
  openDownload();
  forms.exit(0);
  EXPECT_EQ(bar()->value(), bar()->maximum());
  EXPECT_TRUE(eventuallyReads("Done!"));
  EXPECT_TRUE(skip()->isEnabled());
  EXPECT_FALSE(retry());
}

TEST_F(TheDownloadWindow, showsTheErrorInsteadOfTheBar) {
  openDownload();
  forms.print(kProgress);
  forms.exit(3);
  EXPECT_FALSE(bar());
  EXPECT_TRUE(withText<QLabel>("Setup failed (exit code 3). Check internet connection."));
  EXPECT_TRUE(withText<QLabel>("Check your internet connection and try again."));
  EXPECT_TRUE(skip()->isEnabled());
  ASSERT_TRUE(retry());
  settle();
  EXPECT_TRUE(areApart(everything(), *dialog()));
}

TEST_F(TheDownloadWindow, restartsOnRetryWithANewLog) {
  openDownload();
  forms.print(lines(0, 5));
  forms.exit(1);
  EXPECT_TRUE(eventuallyReads("line 4"));
  retry()->click();
  forms.print(lines(10, 20));  // more lines than before, and no frame drawn in between
  EXPECT_TRUE(eventuallyReads("line 19"));
  EXPECT_EQ(log()->toPlainText().section('\n', 0, 1), "Connecting to HuggingFace...\nline 10");
  EXPECT_TRUE(bar());
}

TEST_F(TheDownloadWindow, skipsOnTheSkipButton) {
  forms.bundle.engine = "/nowhere/quillback";
  forms.onSkip = [this] { window.reset(); };
  openDownload();
  skip()->click();
  EXPECT_EQ(forms.skips, 1);
  EXPECT_FALSE(dialog());
  settle();
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

TEST_F(TheDownloadWindow, closesOnEscapeWithoutSkipping) {
  openDownload();
  QTest::keyClick(dialog(), Qt::Key_Escape);
  EXPECT_FALSE(window->isVisible());
  settle();
  forms.print(lines(0, 3));
  forms.exit(0);
  EXPECT_EQ(forms.skips, 0);
  forms.time.advance(std::chrono::seconds(1));
  EXPECT_EQ(forms.completions, 1);
}

TEST_F(TheDownloadWindow, showsWhatHappenedWhileItWasClosed) {
  openDownload();
  window->close();
  settle();
  forms.print(lines(0, 3));
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(eventuallyReads("line 2"));
  forms.exit(0);
  EXPECT_TRUE(eventuallyReads("Done!"));
}

TEST_F(TheDownloadWindow, keepsItsSizeThroughAllStatesInAnyFont) {
  for (const int points : {8, 10, 14, 18, 24}) {
    setFontSize(points);
    openDownload();
    const QSize size = dialog()->size();
    forms.print(kProgress);
    eventually([] { return amount() == "yes"; });
    EXPECT_EQ(dialog()->size(), size) << points;
    EXPECT_TRUE(areApart(everything(), *dialog())) << points;
    forms.exit(0);
    settle();
    EXPECT_EQ(dialog()->size(), size) << points;
    window.reset();
    settle();
  }
}

TEST_F(TheDownloadWindow, hasRoomForALongError) {
  setFontSize(18);
  forms.bundle.engine = "/a/long/path/" + std::string(300, 'x') + "/quillback";
  openDownload();
  settle();
  EXPECT_TRUE(areApart(everything(), *dialog()));
}

TEST_F(TheDownloadWindow, pressesTheFocusedButtonOnReturn) {
  openDownload();
  forms.exit(1);
  retry()->setFocus();
  QTest::keyClick(retry(), Qt::Key_Return);
  EXPECT_TRUE(bar());
  EXPECT_EQ(forms.skips, 0);
}

TEST_F(TheDownloadWindow, pressesNothingOnReturnElsewhere) {
  openDownload();
  forms.exit(1);
  QTest::keyClick(dialog()->focusWidget(), Qt::Key_Return);
  EXPECT_TRUE(retry());
  EXPECT_EQ(forms.skips, 0);
}

TEST_F(TheDownloadWindow, showsTheNewestLineAndScrollsToOlderOnes) {
  openDownload();
  forms.print(lines(0, 100));
  EXPECT_TRUE(eventuallyReads("line 99"));
  EXPECT_TRUE(newestIsInView());
  log()->verticalScrollBar()->setValue(0);
  EXPECT_EQ(log()->cursorForPosition(QPoint(5, 5)).block().text(), "Connecting to HuggingFace...");
  forms.print(lines(100, 101));
  EXPECT_TRUE(eventuallyReads("line 100"));
  EXPECT_TRUE(newestIsInView());
}

TEST_F(TheDownloadWindow, keepsTheSelectionInTheLog) {
  openDownload();
  log()->selectAll();
  forms.print(lines(0, 50));
  EXPECT_TRUE(eventuallyReads("line 49"));
  EXPECT_EQ(log()->textCursor().selectedText(), "Connecting to HuggingFace...");
  EXPECT_TRUE(newestIsInView());
}

TEST_F(TheDownloadWindow, wrapsALongLine) {
  openDownload();
  forms.print(std::string(400, 'x') + "\n");
  EXPECT_TRUE(eventuallyReads(QString(400, 'x')));
  EXPECT_GT(log()->document()->lastBlock().lineCount(), 1);
  EXPECT_EQ(log()->horizontalScrollBar()->value(), 0);
  EXPECT_TRUE(newestIsInView());
}

TEST_F(TheDownloadWindow, showsTwoHundredThousandLines) {
  openDownload();
  forms.print(lines(0, 200'000));
  EXPECT_TRUE(eventuallyReads("line 199999"));
  EXPECT_TRUE(newestIsInView());
  EXPECT_TRUE(eventually([] { return log()->blockCount() >= 200'001; }));
  EXPECT_EQ(log()->blockCount(), 200'001);
  EXPECT_EQ(log()->document()->findBlockByNumber(123'457).text(), "line 123456");
  EXPECT_TRUE(newestIsInView());
}

TEST_F(TheDownloadWindow, losesNoLineHoweverFastTheyCome) {
  openDownload();
  std::string expected = "Connecting to HuggingFace...";
  int printed = 0;
  for (const int burst : {3000, 10, 500, 199, 201, 1, 7000}) {
    const std::string text = lines(printed, printed + burst);
    printed += burst;
    forms.print(text);
    expected += "\n" + text.substr(0, text.size() - 1);
    const QString newest = "line " + QString::number(printed - 1);
    EXPECT_TRUE(eventuallyReads(newest));  // older ones may still be missing
  }
  EXPECT_TRUE(eventually([&] { return log()->blockCount() == printed + 1; }));
  EXPECT_EQ(log()->toPlainText().toStdString(), expected);
}

TEST_F(TheDownloadWindow, showsEachLineAsOneLine) {
  openDownload();
  const std::string odd = "a \xEF\xB7\x90 b \xEF\xB7\x91 c \t <b>d</b>";
  forms.print(odd + "\n" + lines(0, 500));
  EXPECT_TRUE(eventuallyReads("line 499"));
  EXPECT_TRUE(eventually([] { return log()->blockCount() == 502; }));
  EXPECT_EQ(log()->document()->findBlockByNumber(1).text(),
            QString::fromUtf8("a \uFFFD b \uFFFD c \t <b>d</b>"));
}

TEST_F(TheDownloadWindow, hasNamesAndTextsForAssistiveTechnology) {
  openDownload();
  forms.print(lines(0, 2));
  EXPECT_TRUE(eventuallyReads("line 1"));
  QAccessibleInterface* const text = QAccessible::queryAccessibleInterface(log());
  EXPECT_EQ(text->text(QAccessible::Name), "Download log");
  EXPECT_TRUE(text->state().readOnly);
  ASSERT_TRUE(text->textInterface());
  EXPECT_EQ(text->textInterface()->text(0, text->textInterface()->characterCount()),
            "Connecting to HuggingFace...\nline 0\nline 1");
  EXPECT_EQ(QAccessible::queryAccessibleInterface(bar())->text(QAccessible::Name),
            "Download progress");
  EXPECT_EQ(QAccessible::queryAccessibleInterface(skip())->text(QAccessible::Name),
            "Skip (won't work without model)");
  EXPECT_TRUE(QAccessible::queryAccessibleInterface(skip())->state().disabled);
}

}  // namespace
}  // namespace voxtrel::testing
