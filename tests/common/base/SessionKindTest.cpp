#include <gtest/gtest.h>

#include "common/base/SessionKind.h"

namespace voxtrel {
namespace {

TEST(SessionKind, IsX11OnlyWhereNothingSpeaksOfWaylandAndThereIsAnXServer) {
  struct Row {
    SessionVariables variables;
    SessionKind expected;
  };
  const Row rows[] = {
      {{":0", nullptr, nullptr}, SessionKind::x11},
      {{":0", nullptr, "x11"}, SessionKind::x11},
      {{":0", nullptr, "tty"}, SessionKind::x11},
      {{":0", "", "x11"}, SessionKind::x11},
      {{":0", "wayland-0", "x11"}, SessionKind::wayland},
      {{":0", "wayland-0", nullptr}, SessionKind::wayland},
      {{":0", nullptr, "wayland"}, SessionKind::wayland},
      {{nullptr, "wayland-0", "wayland"}, SessionKind::wayland},
      {{nullptr, nullptr, nullptr}, SessionKind::wayland},
      {{"", nullptr, "x11"}, SessionKind::wayland},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(sessionKind(row.variables, SessionKind::wayland), row.expected) << &row - rows;
  }
}

TEST(SessionKind, IsTheCallersChoiceOnlyWhereNoDisplayIsNamed) {
  constexpr auto kChoice = SessionKind::x11;
  EXPECT_EQ(sessionKind({nullptr, nullptr, nullptr}, kChoice), SessionKind::x11);
  EXPECT_EQ(sessionKind({"", "", "tty"}, kChoice), SessionKind::x11);
  EXPECT_EQ(sessionKind({nullptr, "wayland-0", nullptr}, kChoice), SessionKind::wayland);
  EXPECT_EQ(sessionKind({nullptr, nullptr, "wayland"}, kChoice), SessionKind::wayland);
}

TEST(DesktopFamilyTest, theFirstKnownNameOfTheListCountsInAnyCase) {
  EXPECT_EQ(desktopFamily("GNOME"), DesktopFamily::gnome);
  EXPECT_EQ(desktopFamily("ubuntu:gnome"), DesktopFamily::gnome);
  EXPECT_EQ(desktopFamily("KDE"), DesktopFamily::kde);
  EXPECT_EQ(desktopFamily("KDE:GNOME"), DesktopFamily::kde);
  for (const char* other : {"", ":", "sway", "GNOME-Flashback", "KD", "XFCE:", "gnom"}) {
    EXPECT_EQ(desktopFamily(other), DesktopFamily::other) << other;
  }
}

}  // namespace
}  // namespace voxtrel
