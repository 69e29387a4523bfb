#include <QAbstractItemView>
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QWheelEvent>
#include <algorithm>

#include "common/settings/ConfigManager.h"
#include "support/SavedSettings.h"
#include "voxtrel/platform/linux/windows/FormFixture.h"

namespace voxtrel::testing {
namespace {

class TheSettingsWindow : public FormFixture {
 protected:
  TheSettingsWindow() {
    qputenv("XDG_CURRENT_DESKTOP", "XFCE");
    forms.onSave = [this] { ++saves; };
  }

  static QComboBox* picker(int index) { return visible<QComboBox>().at(index); }
  static QCheckBox* checkBox() { return visible<QCheckBox>().first(); }
  static QPushButton* saveButton() { return visible<QPushButton>().first(); }
  static QString nameOf(QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
  }
  ModelSettings saved() const { return ConfigManager(forms.home.path().string()).readSettings(); }

  static QList<QWidget*> everything() {
    QList<QWidget*> widgets;
    for (QLabel* const label : visible<QLabel>()) widgets << label;
    for (QComboBox* const box : visible<QComboBox>()) widgets << box;
    widgets << checkBox() << saveButton();
    return widgets;
  }

  static void wheel(QWidget* widget) {
    QWheelEvent event(QPointF(5, 5), widget->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
  }

  int saves = 0;
};

TEST_F(TheSettingsWindow, hasTheGivenTitleAndSize) {
  openSettings();
  EXPECT_EQ(dialog()->windowTitle(), "Voxtrel Settings");
  EXPECT_EQ(dialog()->size(), QSize(420, 280));
  EXPECT_EQ(dialog()->minimumSize(), dialog()->maximumSize());
}

TEST_F(TheSettingsWindow, cutsNoRowInAnyFont) {
  for (const int points : {8, 10, 14, 18, 24, 32}) {
    setFontSize(points);
    openSettings();
    EXPECT_EQ(everything().size(), 10);
    EXPECT_TRUE(areApart(everything(), *dialog())) << points;
    window->close();
    settle();
  }
}

TEST_F(TheSettingsWindow, growsWithTheFontWhileItIsOpen) {
  openSettings();
  QFont font = dialog()->font();
  font.setPointSize(24);
  dialog()->setFont(font);
  settle();
  EXPECT_GT(dialog()->height(), 280);
  EXPECT_TRUE(areApart(everything(), *dialog()));
}

TEST_F(TheSettingsWindow, putsLabelsAndControlsInTheirColumns) {
  setFontSize(9);
  openSettings();
  const QLabel* const label = withText<QLabel>("&Hotkey:");
  ASSERT_TRUE(label);
  EXPECT_EQ(label->width(), 130);
  EXPECT_TRUE(label->alignment() & Qt::AlignRight);
  EXPECT_EQ(picker(0)->width(), 200);
  EXPECT_EQ(picker(0)->geometry().center().y(), label->geometry().center().y());
  EXPECT_EQ(checkBox()->x(), picker(0)->x());
  EXPECT_LE(std::abs(saveButton()->geometry().center().x() - 210), 1);
}

TEST_F(TheSettingsWindow, listsTheTables) {
  openSettings();
  EXPECT_EQ(picker(0)->count(), 9);
  EXPECT_EQ(picker(0)->itemText(4), "Shift + \\");
  EXPECT_EQ(picker(1)->count(), 23);
  EXPECT_EQ(picker(1)->itemText(22), "Cantonese (v3 only)");
  EXPECT_EQ(picker(2)->count(), 2);
  EXPECT_EQ(picker(2)->itemText(1), "Translate to English");
}

TEST_F(TheSettingsWindow, hasTheExactTexts) {
  openSettings();
  QStringList names;
  for (QLabel* const label : visible<QLabel>()) names << nameOf(label);
  EXPECT_EQ(names,
            QStringList({"Whisper Large v3", "Model:", "Hotkey:", "Input Language:", "Output:"}));
  EXPECT_EQ(nameOf(checkBox()), "Launch at Login");
  EXPECT_EQ(nameOf(saveButton()), "Save & Restart");
}

TEST_F(TheSettingsWindow, namesEveryPickerByItsLabel) {
  openSettings();
  const char* const names[] = {"Hotkey:", "Input Language:", "Output:"};
  for (int index = 0; index < 3; ++index) {
    const auto labels =
        QAccessible::queryAccessibleInterface(picker(index))->relations(QAccessible::Label);
    ASSERT_EQ(labels.size(), 1) << index;
    EXPECT_EQ(labels.first().first->text(QAccessible::Name), names[index]);
  }
}

TEST_F(TheSettingsWindow, movesTheFocusFromTopToBottom) {
  openSettings();
  QList<QWidget*> visited;
  for (int tabs = 0; tabs < 5; ++tabs) {
    visited << dialog()->focusWidget();
    QTest::keyClick(dialog()->focusWidget(), Qt::Key_Tab);
  }
  EXPECT_EQ(visited, QList<QWidget*>({picker(0), picker(1), picker(2), checkBox(), saveButton()}));
}

TEST_F(TheSettingsWindow, savesWhatIsChosen) {
  openSettings();
  picker(0)->setCurrentIndex(6);
  picker(1)->setCurrentIndex(11);
  picker(2)->setCurrentIndex(1);
  saveButton()->click();
  EXPECT_EQ(saves, 1);
  EXPECT_EQ(saved().hotkey, "f6");
  EXPECT_EQ(saved().language, "de");
  EXPECT_TRUE(saved().translate);
}

TEST_F(TheSettingsWindow, writesTheSameBytesOnEveryDesktop) {
  for (const SavedChoice& choice : kSavedChoices) {
    std::filesystem::remove(forms.home.path() / kSettingsPath);
    if (!choice.before.empty()) forms.home.write(kSettingsPath, choice.before);
    openSettings();
    picker(0)->setCurrentIndex(static_cast<int>(choice.hotkey));
    picker(1)->setCurrentIndex(static_cast<int>(choice.inputLanguage));
    picker(2)->setCurrentIndex(static_cast<int>(choice.output));
    saveButton()->click();
    EXPECT_EQ(settingsFile(forms.home), choice.after);
    window->close();
    settle();
  }
}

TEST_F(TheSettingsWindow, savesOnReturnWhateverHasTheFocus) {
  openSettings();
  EXPECT_TRUE(saveButton()->isDefault());
  int expected = 0;
  for (QWidget* const widget : QList<QWidget*>{picker(0), picker(2), checkBox(), saveButton()}) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
      widget->setFocus();
      QTest::keyClick(widget, key);
      EXPECT_EQ(saves, ++expected) << widget->metaObject()->className();
    }
  }
}

TEST_F(TheSettingsWindow, returnInAnOpenListChoosesARow) {
  openSettings();
  picker(0)->showPopup();
  QWidget* const list = QApplication::activePopupWidget();
  ASSERT_TRUE(list);
  QWidget* const rows = list->findChild<QAbstractItemView*>();
  QTest::keyClick(rows, Qt::Key_Down);
  QTest::keyClick(rows, Qt::Key_Return);
  EXPECT_EQ(picker(0)->currentText(), "Right Shift");
  EXPECT_EQ(saves, 0);
}

TEST_F(TheSettingsWindow, closesOnEscapeWithoutSaving) {
  openSettings();
  QTest::keyClick(picker(1), Qt::Key_Escape);
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(saves, 0);
}

TEST_F(TheSettingsWindow, showsTheSystemsLaunchAtLogin) {
  forms.loginItem.enabled = true;
  openSettings();
  EXPECT_TRUE(checkBox()->isChecked());
}

TEST_F(TheSettingsWindow, registersAtTheClickAndUnchecksIfThatFails) {
  openSettings();
  checkBox()->click();
  EXPECT_TRUE(forms.loginItem.enabled);
  EXPECT_TRUE(checkBox()->isChecked());
  checkBox()->click();
  forms.loginItem.canEnable = false;
  checkBox()->click();
  EXPECT_FALSE(checkBox()->isChecked());
}

TEST_F(TheSettingsWindow, ignoresTheWheelOverAPickerWithoutFocus) {
  openSettings();
  picker(0)->setFocus();
  wheel(picker(1));
  EXPECT_EQ(picker(1)->currentIndex(), 0);
  wheel(picker(0));
  EXPECT_EQ(picker(0)->currentIndex(), 1);
}

TEST_F(TheSettingsWindow, mayBeDestroyedByItsOwnButton) {
  forms.onSave = [this] { window.reset(); };
  openSettings();
  saveButton()->click();
  EXPECT_FALSE(dialog());
  settle();
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

TEST_F(TheSettingsWindow, keepsNoWidgetsAfterClosing) {
  openSettings();
  window->close();
  window->close();
  settle();
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

TEST_F(TheSettingsWindow, followsItsFormWhenReopenedRightAfterClosing) {
  openSettings();
  window->close();
  window->makeKeyAndOrderFront();
  settle();
  ASSERT_TRUE(window->isVisible());
  forms.loginItem.canEnable = false;
  checkBox()->click();
  EXPECT_FALSE(checkBox()->isChecked());
}

TEST_F(TheSettingsWindow, comesForwardIfAlreadyOpen) {
  openSettings();
  QDialog* const first = dialog();
  window->makeKeyAndOrderFront();
  EXPECT_EQ(dialog(), first);
  // Qt 6.8 makes the pickers' lists, not shown, together with the window.
  const QWidgetList all = QApplication::topLevelWidgets();
  EXPECT_EQ(std::count_if(all.begin(), all.end(), [](QWidget* one) { return one->isVisible(); }),
            1);
}

}  // namespace
}  // namespace voxtrel::testing
