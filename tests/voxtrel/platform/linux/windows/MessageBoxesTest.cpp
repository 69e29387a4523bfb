#include <QLabel>
#include <QMessageBox>
#include <QProxyStyle>
#include <QPushButton>

#include "voxtrel/platform/linux/windows/FormFixture.h"
#include "voxtrel/platform/linux/windows/MessageBoxes.h"

namespace voxtrel::testing {
namespace {

/// A desktop with another order of buttons.
class StyleWithLayout : public QProxyStyle {
 public:
  explicit StyleWithLayout(int layout) : QProxyStyle("fusion"), layout_(layout) {}
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override {
    if (hint == SH_DialogButtonLayout) return layout_;
    return QProxyStyle::styleHint(hint, option, widget, data);
  }

 private:
  const int layout_;
};

class AnAlert : public FormFixture {
 protected:
  void run() {
    alerts->runModal(
        {"Microphone & More", "Privacy > <b>Microphone</b>.", {"Open Settings", "Quit"}},
        [this](std::size_t button) { answers.push_back(button); });
    settle();
    activate();
  }
  static QPushButton* button(const char* text) { return withText<QPushButton>(text); }

  std::unique_ptr<QtAlerts> alerts = std::make_unique<QtAlerts>(colors);
  std::vector<std::size_t> answers;
};

TEST_F(AnAlert, showsItsTextsLiterally) {
  run();
  EXPECT_EQ(dialog()->windowTitle(), "Voxtrel");
  EXPECT_TRUE(dialog()->isModal());
  EXPECT_EQ(static_cast<QMessageBox*>(dialog())->icon(), QMessageBox::Warning);
  ASSERT_TRUE(withText<QLabel>("Microphone & More"));
  EXPECT_EQ(withText<QLabel>("Microphone & More")->textFormat(), Qt::PlainText);
  ASSERT_TRUE(withText<QLabel>("Privacy > <b>Microphone</b>."));
  EXPECT_EQ(withText<QLabel>("Privacy > <b>Microphone</b>.")->textFormat(), Qt::PlainText);
}

TEST_F(AnAlert, keepsTheOrderOfItsButtonsOnEveryDesktop) {
  for (const int layout : {0, 1, 2, 3, 5}) {  // Windows, macOS, KDE, GNOME, Android
    QApplication::setStyle(new StyleWithLayout(layout));
    run();
    EXPECT_LT(button("Open Settings")->x(), button("Quit")->x()) << layout;
    button("Quit")->click();
    settle();
  }
}

TEST_F(AnAlert, reportsTheIndexOfTheButton) {
  run();
  EXPECT_TRUE(answers.empty());
  button("Open Settings")->click();
  EXPECT_EQ(answers, std::vector<std::size_t>({0}));
  settle();
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
  run();
  button("Quit")->click();
  EXPECT_EQ(answers, std::vector<std::size_t>({0, 1}));
}

TEST_F(AnAlert, treatsReturnAsTheFirstButton) {
  run();
  EXPECT_TRUE(button("Open Settings")->isDefault());
  QTest::keyClick(dialog(), Qt::Key_Return);
  EXPECT_EQ(answers, std::vector<std::size_t>({0}));
}

TEST_F(AnAlert, treatsEscapeAsTheLastButton) {
  run();
  QTest::keyClick(dialog(), Qt::Key_Escape);
  EXPECT_EQ(answers, std::vector<std::size_t>({1}));
}

TEST_F(AnAlert, treatsTheCloseBoxAsTheLastButton) {
  run();
  dialog()->close();
  EXPECT_EQ(answers, std::vector<std::size_t>({1}));
}

TEST_F(AnAlert, isNotAnsweredByTheEndOfTheApplication) {
  run();
  alerts.reset();
  settle();
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
  EXPECT_TRUE(answers.empty());
}

TEST_F(AnAlert, showsEverythingInALargeFont) {
  setFontSize(24);
  run();
  QList<QWidget*> widgets{button("Open Settings"), button("Quit")};
  for (QLabel* const label : visible<QLabel>()) widgets << label;
  EXPECT_TRUE(areApart(widgets, *dialog()));
}

class TheUpdateNotice : public FormFixture {
 protected:
  std::unique_ptr<UpdateNotice> notice = std::make_unique<UpdateNotice>("1.2.3");
};

TEST_F(TheUpdateNotice, showsTheVersionWithoutBlockingOtherWindows) {
  notice->checkForUpdates();
  ASSERT_TRUE(dialog());
  EXPECT_EQ(dialog()->windowTitle(), "Voxtrel Updates");
  EXPECT_FALSE(dialog()->isModal());
  EXPECT_TRUE(withText<QLabel>("Voxtrel 1.2.3"));
  EXPECT_TRUE(withText<QLabel>("This build has no update feed."));
}

TEST_F(TheUpdateNotice, hasOneBoxAtATimeAndTakesItAlong) {
  notice->checkForUpdates();
  notice->checkForUpdates();
  EXPECT_EQ(QApplication::topLevelWidgets().size(), 1);
  dialog()->close();
  settle();
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
  notice->checkForUpdates();
  EXPECT_TRUE(dialog());
  notice.reset();
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

}  // namespace
}  // namespace voxtrel::testing
