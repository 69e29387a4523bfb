#include <gtest/gtest.h>

#include "voxtrel/platform/linux/tray/StatusNotifierItem.h"

namespace voxtrel {
namespace {

TEST(NotifierPixmap, isSentAsAlphaRedGreenBlueRowByRow) {
  QImage image(3, 2, QImage::Format_ARGB32);
  image.fill(Qt::transparent);
  image.setPixel(0, 0, 0x11223344);
  image.setPixel(2, 1, 0xaabbccdd);
  const NotifierPixmap pixmap = notifierPixmap(image);
  EXPECT_EQ(pixmap.width, 3);
  EXPECT_EQ(pixmap.height, 2);
  EXPECT_EQ(pixmap.argb.toHex(),
            "112233440000000000000000"
            "0000000000000000aabbccdd");
}

TEST(NotifierPixmap, isNotPremultiplied) {
  QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
  image.setPixel(0, 0, 0x80800000);
  EXPECT_EQ(notifierPixmap(image).argb.toHex(), "80ff0000");
}

TEST(NotifierPixmap, ofNoImageIsEmpty) {
  EXPECT_TRUE(notifierPixmap(QImage()).argb.isEmpty());
}

}  // namespace
}  // namespace voxtrel
