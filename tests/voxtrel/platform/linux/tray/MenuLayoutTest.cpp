#include <gtest/gtest.h>

#include "voxtrel/platform/linux/tray/MenuLayout.h"

namespace voxtrel {
namespace {

MenuLayout twoRowsAndALine() {
  MenuLayout layout;
  layout.setRows({{.title = "R&D a_b", .enabled = false},
                  {.separator = true},
                  {.title = "Settings...", .keyEquivalent = ","}});
  return layout;
}

MenuNode childOf(const MenuNode& node, qsizetype index) {
  return node.children.at(index).value<MenuNode>();
}

TEST(MenuLayout, aRowTellsItsLabelAndWhetherItCanBeChosen) {
  const MenuLayout layout = twoRowsAndALine();
  EXPECT_EQ(layout.properties(layout.idOf(0)),
            (QVariantMap{{"label", "R&D a__b"}, {"enabled", false}, {"visible", true}}));
}

TEST(MenuLayout, aLineTellsNoLabel) {
  const MenuLayout layout = twoRowsAndALine();
  EXPECT_EQ(layout.properties(layout.idOf(1)),
            (QVariantMap{{"type", "separator"}, {"visible", true}}));
}

TEST(MenuLayout, keysAreNamedAsTheXServerNamesThem) {
  EXPECT_EQ(menuShortcut(","), (MenuShortcut{{"Control", "comma"}}));
  EXPECT_EQ(menuShortcut("q"), (MenuShortcut{{"Control", "q"}}));
}

TEST(MenuLayout, onlyARowWithAKeyTellsAShortcut) {
  const MenuLayout layout = twoRowsAndALine();
  EXPECT_EQ(layout.properties(layout.idOf(2)).value("shortcut").value<MenuShortcut>(),
            menuShortcut(","));
  EXPECT_FALSE(layout.properties(layout.idOf(0)).contains("shortcut"));
}

TEST(MenuLayout, theRootHasAllRowsInOrder) {
  const MenuLayout layout = twoRowsAndALine();
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

TEST(MenuLayout, aDepthOfZeroLeavesTheRowsOut) {
  EXPECT_TRUE(twoRowsAndALine().node(MenuLayout::kRootId, 0, {}).children.isEmpty());
  EXPECT_EQ(twoRowsAndALine().node(MenuLayout::kRootId, 1, {}).children.size(), 3);
}

TEST(MenuLayout, aRowByItselfIsANodeWithoutChildren) {
  const MenuLayout layout = twoRowsAndALine();
  const MenuNode node = layout.node(layout.idOf(0), -1, {});
  EXPECT_EQ(node.id, layout.idOf(0));
  EXPECT_EQ(node.properties.value("label"), "R&D a__b");
  EXPECT_TRUE(node.children.isEmpty());
}

TEST(MenuLayout, onlyThePropertiesAskedForAreTold) {
  const MenuLayout layout = twoRowsAndALine();
  EXPECT_EQ(layout.properties(layout.idOf(0), {"enabled", "unheard-of"}),
            (QVariantMap{{"enabled", false}}));
  const MenuNode root = layout.node(MenuLayout::kRootId, -1, {"label"});
  EXPECT_EQ(childOf(root, 0).properties, (QVariantMap{{"label", "R&D a__b"}}));
}

TEST(MenuLayout, aGroupHasTheKnownOnesOfTheNumbersAskedFor) {
  const MenuLayout layout = twoRowsAndALine();
  const auto group = layout.group({layout.idOf(2), 99, -1}, {"label"});
  ASSERT_EQ(group.size(), 1);
  EXPECT_EQ(group.first().id, layout.idOf(2));
  EXPECT_EQ(group.first().properties, (QVariantMap{{"label", "Settings..."}}));
}

TEST(MenuLayout, aGroupOfNoNumbersIsEveryRowAndTheRoot) {
  EXPECT_EQ(twoRowsAndALine().group({}, {}).size(), 4);
}

TEST(MenuLayout, strangersAreNotKnown) {
  const MenuLayout layout = twoRowsAndALine();
  EXPECT_TRUE(layout.has(MenuLayout::kRootId));
  EXPECT_EQ(layout.find(MenuLayout::kRootId), nullptr);
  for (const int id :
       {-1, layout.idOf(3), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(layout.has(id)) << id;
  }
}

TEST(MenuLayout, newRowsGetNumbersThatNoneHadBefore) {
  MenuLayout layout = twoRowsAndALine();
  const int lastOld = layout.idOf(2);
  layout.setRows({{.title = "Quit"}});
  EXPECT_GT(layout.idOf(0), lastOld);
  EXPECT_FALSE(layout.has(lastOld));
}

TEST(MenuLayout, onlyAnotherTitleOfARowThatIsThereIsAChange) {
  MenuLayout layout = twoRowsAndALine();
  EXPECT_FALSE(layout.setTitle(0, "R&D a_b"));
  EXPECT_FALSE(layout.setTitle(3, "none"));
  EXPECT_TRUE(layout.setTitle(0, "other"));
  EXPECT_EQ(layout.rows()[0].title, "other");
}

}  // namespace
}  // namespace voxtrel
