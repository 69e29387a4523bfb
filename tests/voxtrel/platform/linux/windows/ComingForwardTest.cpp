#include <gtest/gtest.h>

#include <QWidget>
#include <cstdlib>
#include <string>

#include "support/Variable.h"
#include "voxtrel/platform/linux/application/QtApplication.h"
#include "voxtrel/platform/linux/windows/FormFixture.h"

namespace voxtrel {
namespace {

constexpr const char* kTokenVariable = "XDG_ACTIVATION_TOKEN";

/// Notes the environment at the moment in which it is raised.
struct WatchedWindow : QWidget {
  bool event(QEvent* event) override {
    if (event->type() == QEvent::ZOrderChange) {
      const char* const value = std::getenv(kTokenVariable);
      seen += value != nullptr ? value : "none";
    }
    return QWidget::event(event);
  }
  std::string seen;
};

using ComingForward = testing::FormFixture;

TEST_F(ComingForward, leavesTheEnvironmentAsItIs) {
  const testing::Variable inherited(kTokenVariable, "inherited");
  WatchedWindow watched;
  watched.show();
  bringForward("token");
  EXPECT_EQ(watched.seen, "inherited");
  ASSERT_NE(std::getenv(kTokenVariable), nullptr);
  EXPECT_STREQ(std::getenv(kTokenVariable), "inherited");
}

}  // namespace
}  // namespace voxtrel
