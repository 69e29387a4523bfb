#include <gtest/gtest.h>

#include <QCoreApplication>

#include "voxtrel/platform/linux/tray/MenuObject.h"

namespace voxtrel {
namespace {

/// The signals to hosts and the rows' actions, without a bus.
class MenuObjectFixture : public testing::Test {
 protected:
  MenuObjectFixture() {
    menu_.setRows({{.title = "Ready", .enabled = false, .action = [this] { ++refused_; }},
                   {.title = "Quit", .action = [this] { ++chosen_; }}});
    const MenuNode root = layout();
    first_ = root.children.at(0).value<MenuNode>().id;
    second_ = root.children.at(1).value<MenuNode>().id;
    QObject::connect(&menu_, &MenuObject::ItemsPropertiesUpdated, &menu_,
                     [this](const auto& changed, const auto& removed) {
                       ++updates_;
                       changed_ = changed;
                       EXPECT_TRUE(removed.isEmpty());
                     });
    QObject::connect(&menu_, &MenuObject::LayoutUpdated, &menu_, [this](uint revision, int) {
      ++layouts_;
      revision_ = revision;
    });
  }

  MenuNode layout() {
    MenuNode root;
    revision_ = menu_.GetLayout(0, -1, {}, root);
    return root;
  }

  int argc_ = 0;
  QCoreApplication application_{argc_, nullptr};
  MenuObject menu_;
  int first_ = 0;
  int second_ = 0;
  int chosen_ = 0;
  int refused_ = 0;
  int updates_ = 0;
  int layouts_ = 0;
  uint revision_ = 0;
  QList<MenuRowProperties> changed_;
};

TEST_F(MenuObjectFixture, signalsAChangedTitleOnceAndForThatRowOnly) {
  EXPECT_TRUE(menu_.setTitle(0, "Recording..."));
  EXPECT_EQ(updates_, 1);
  ASSERT_EQ(changed_.size(), 1);
  EXPECT_EQ(changed_.first().id, first_);
  EXPECT_EQ(changed_.first().properties, (QVariantMap{{"label", "Recording..."}}));
  EXPECT_EQ(layouts_, 0);
}

TEST_F(MenuObjectFixture, signalsNothingIfTheTitleIsTheSame) {
  EXPECT_FALSE(menu_.setTitle(0, "Ready"));
  EXPECT_EQ(updates_ + layouts_, 0);
}

TEST_F(MenuObjectFixture, newRowsAreANewRevision) {
  const uint before = revision_;
  menu_.setRows({});
  EXPECT_EQ(layouts_, 1);
  EXPECT_GT(revision_, before);
  EXPECT_TRUE(layout().children.isEmpty());
}

TEST_F(MenuObjectFixture, runsAnActionOnlyAfterTheHostGotItsReply) {
  menu_.Event(second_, "clicked", {}, 0);
  EXPECT_EQ(chosen_, 0);
  QCoreApplication::sendPostedEvents();
  EXPECT_EQ(chosen_, 1);
}

TEST_F(MenuObjectFixture, runsAnActionOnceForAllClicksThatWaitForIt) {
  for (int click = 0; click < 100; ++click) menu_.Event(second_, "clicked", {}, 0);
  QCoreApplication::sendPostedEvents();
  EXPECT_EQ(chosen_, 1);
}

TEST_F(MenuObjectFixture, runsAnActionOnceMoreForClicksWhileItRuns) {
  const auto clickTwice = [this] {
    if (++chosen_ > 1) return;
    for (int click = 0; click < 2; ++click) menu_.Event(second_, "clicked", {}, 0);
  };
  menu_.setRows({{.title = "Restart", .action = clickTwice}});
  second_ = layout().children.at(0).value<MenuNode>().id;
  menu_.Event(second_, "clicked", {}, 0);
  QCoreApplication::sendPostedEvents();
  QCoreApplication::sendPostedEvents();
  EXPECT_EQ(chosen_, 2);
}

TEST_F(MenuObjectFixture, runsNoActionOfADisabledRow) {
  menu_.Event(first_, "clicked", {}, 0);
  QCoreApplication::sendPostedEvents();
  EXPECT_EQ(refused_, 0);
}

TEST_F(MenuObjectFixture, runsAnActionOnlyForAClick) {
  for (const char* event : {"opened", "closed", "hovered"}) menu_.Event(second_, event, {}, 0);
  QCoreApplication::sendPostedEvents();
  EXPECT_EQ(chosen_, 0);
}

TEST_F(MenuObjectFixture, returnsTheUnknownIdsOfAGroupOfEvents) {
  EXPECT_EQ(menu_.EventGroup({{99, "clicked", {}, 0}, {second_, "clicked", {}, 0}}),
            QList<int>{99});
  QCoreApplication::sendPostedEvents();
  EXPECT_EQ(chosen_, 1);
}

TEST_F(MenuObjectFixture, needsNoUpdateBeforeItIsShown) {
  QList<int> unknown;
  EXPECT_FALSE(menu_.AboutToShow(0));
  EXPECT_TRUE(menu_.AboutToShowGroup({0, first_, 99}, unknown).isEmpty());
  EXPECT_EQ(unknown, QList<int>{99});
}

TEST_F(MenuObjectFixture, returnsASinglePropertyOfARow) {
  EXPECT_EQ(menu_.GetProperty(second_, "label").variant(), "Quit");
  EXPECT_EQ(menu_.GetProperty(first_, "enabled").variant(), false);
}

}  // namespace
}  // namespace voxtrel
