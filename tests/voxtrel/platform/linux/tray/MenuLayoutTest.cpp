#include <gtest/gtest.h>

#include "voxtrel/platform/linux/tray/MenuLayout.h"

namespace voxtrel {
namespace {

MenuLayout twoRowsAndASeparator() {
  MenuLayout layout;
  layout.setRows({{.title = "R&D a_b", .enabled = false},
                  {.separator = true},
                  {.title = "Settings...", .keyEquivalent = ","}});
  return layout;
}

MenuNode childOf(const MenuNode& node, qsizetype index) {
  return node.children.at(index).value<MenuNode>();
}

TEST(MenuLayout, aRowHasItsLabelAndWhetherItIsEnabled) {
  const MenuLayout layout = twoRowsAndASeparator();
  EXPECT_EQ(layout.properties(layout.idOf(0)),
            (QVariantMap{{"label", "R&D a__b"}, {"enabled", false}, {"visible", true}}));
}

TEST(MenuLayout, aSeparatorHasNoLabel) {
  const MenuLayout layout = twoRowsAndASeparator();
  EXPECT_EQ(layout.properties(layout.idOf(1)),
            (QVariantMap{{"type", "separator"}, {"visible", true}}));
}

TEST(MenuLayout, keysAreNamedAsTheXServerNamesThem) {
  EXPECT_EQ(menuShortcut(","), (MenuShortcut{{"Control", "comma"}}));
  EXPECT_EQ(menuShortcut("q"), (MenuShortcut{{"Control", "q"}}));
}

TEST(MenuLayout, onlyARowWithAKeyHasAShortcut) {
  const MenuLayout layout = twoRowsAndASeparator();
  EXPECT_EQ(layout.properties(layout.idOf(2)).value("shortcut").value<MenuShortcut>(),
            menuShortcut(","));
  EXPECT_FALSE(layout.properties(layout.idOf(0)).contains("shortcut"));
}

TEST(MenuLayout, theRootHasAllRowsInOrder) {
  const MenuLayout layout = twoRowsAndASeparator();
  const MenuNode root = layout.node(MenuLayout::kRootId, -1, {});
  EXPECT_EQ(root.properties, (QVariantMap{{"children-display", "submenu"}}));
  ASSERT_EQ(root.children.size(), 3);
  for (std::size_t row = 0; row < 3; ++row) {
    const MenuNode child = childOf(root, static_cast<qsizetype>(row));
    EXPECT_EQ(child.id, layout.idOf(row));
    EXPECT_EQ(child.properties, layout.properties(child.id));
    EXPECT_TRUE(child.children.isEmpty());
  }
}

TEST(MenuLayout, aDepthOfZeroOmitsTheRows) {
  EXPECT_TRUE(twoRowsAndASeparator().node(MenuLayout::kRootId, 0, {}).children.isEmpty());
  EXPECT_EQ(twoRowsAndASeparator().node(MenuLayout::kRootId, 1, {}).children.size(), 3);
}

TEST(MenuLayout, aRowByItselfIsANodeWithoutChildren) {
  const MenuLayout layout = twoRowsAndASeparator();
  const MenuNode node = layout.node(layout.idOf(0), -1, {});
  EXPECT_EQ(node.id, layout.idOf(0));
  EXPECT_EQ(node.properties.value("label"), "R&D a__b");
  EXPECT_TRUE(node.children.isEmpty());
}

TEST(MenuLayout, onlyTheRequestedPropertiesAreReturned) {
  const MenuLayout layout = twoRowsAndASeparator();
  EXPECT_EQ(layout.properties(layout.idOf(0), {"enabled", "unheard-of"}),
            (QVariantMap{{"enabled", false}}));
  const MenuNode root = layout.node(MenuLayout::kRootId, -1, {"label"});
  EXPECT_EQ(childOf(root, 0).properties, (QVariantMap{{"label", "R&D a__b"}}));
}

TEST(MenuLayout, aGroupContainsTheKnownOnesOfTheRequestedIds) {
  const MenuLayout layout = twoRowsAndASeparator();
  const auto group = layout.group({layout.idOf(2), 99, -1}, {"label"});
  ASSERT_EQ(group.size(), 1);
  EXPECT_EQ(group.first().id, layout.idOf(2));
  EXPECT_EQ(group.first().properties, (QVariantMap{{"label", "Settings..."}}));
}

TEST(MenuLayout, aGroupWithoutIdsIsEveryRowAndTheRoot) {
  EXPECT_EQ(twoRowsAndASeparator().group({}, {}).size(), 4);
}

TEST(MenuLayout, otherIdsAreUnknown) {
  const MenuLayout layout = twoRowsAndASeparator();
  EXPECT_TRUE(layout.has(MenuLayout::kRootId));
  EXPECT_EQ(layout.find(MenuLayout::kRootId), nullptr);
  for (const int id :
       {-1, layout.idOf(3), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(layout.has(id)) << id;
  }
}

TEST(MenuLayout, newRowsGetIdsThatWereNeverUsed) {
  MenuLayout layout = twoRowsAndASeparator();
  const int lastOld = layout.idOf(2);
  layout.setRows({{.title = "Quit"}});
  EXPECT_GT(layout.idOf(0), lastOld);
  EXPECT_FALSE(layout.has(lastOld));
}

TEST(MenuLayout, onlyANewTitleOfAnExistingRowIsAChange) {
  MenuLayout layout = twoRowsAndASeparator();
  EXPECT_FALSE(layout.setTitle(0, "R&D a_b"));
  EXPECT_FALSE(layout.setTitle(3, "none"));
  EXPECT_TRUE(layout.setTitle(0, "other"));
  EXPECT_EQ(layout.rows()[0].title, "other");
}

/// The label as a tray host shows it: `__` is an underscore, any other `_` is hidden.
QString shownByHost(const QString& label) {
  QString shown;
  for (qsizetype i = 0; i < label.size(); ++i) {
    if (label[i] != u'_') {
      shown += label[i];
    } else if (i + 1 < label.size() && label[i + 1] == u'_') {
      shown += u'_';
      ++i;
    }
  }
  return shown;
}

std::string readAtHost(std::string_view title) {
  return shownByHost(trayHostLabel(title)).toStdString();
}

TEST(TrayHostLabel, showsEveryShortTitleOfAmpersandsAndUnderscoresLiterally) {
  constexpr std::string_view kAlphabet = "a&_";
  constexpr std::size_t kMaxLength = 7;
  std::vector<std::string> titles = {""};
  for (std::size_t length = 0; length < kMaxLength; ++length) {
    std::vector<std::string> longer;
    for (const std::string& title : titles) {
      EXPECT_EQ(readAtHost(title), title);
      for (const char character : kAlphabet) longer.push_back(title + character);
    }
    titles = std::move(longer);
  }
}

TEST(TrayHostLabel, hasNoAccessKey) {
  EXPECT_EQ(trayHostLabel("R&D a_b _ & __x"), "R&D a__b __ & ____x");
}

TEST(TrayHostLabel, keepsTextOutsideAscii) {
  EXPECT_EQ(readAtHost("Ready — hold Right Cmd"), "Ready — hold Right Cmd");
}

}  // namespace
}  // namespace voxtrel
