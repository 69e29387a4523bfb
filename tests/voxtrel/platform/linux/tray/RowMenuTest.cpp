#include <gtest/gtest.h>

#include "voxtrel/platform/linux/tray/RowMenu.h"

namespace voxtrel {
namespace {

TEST(WidgetText, doublesAmpersands) {
  EXPECT_EQ(widgetText("R&D_1 &&"), "R&&D_1 &&&&");
}

}  // namespace
}  // namespace voxtrel
