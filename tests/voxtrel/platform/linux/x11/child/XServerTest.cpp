#include <gtest/gtest.h>

#include <QProcess>

#include "support/XServerDouble.h"
#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {
namespace {

using testing::XServerDouble;

bool isOffered(XServerDouble::Offer offer) {
  const XServerDouble server(offer);
  return offersXInput2(server.display().c_str());
}

TEST(XServerTest, aServerWithVersionTwoOrLaterOffersIt) {
  EXPECT_TRUE(isOffered({.hasExtension = true, .majorVersion = 2}));
  EXPECT_TRUE(isOffered({.hasExtension = true, .majorVersion = 3}));
}

TEST(XServerTest, aServerWithAnEarlierVersionDoesNot) {
  EXPECT_FALSE(isOffered({.hasExtension = true, .majorVersion = 1}));
}

TEST(XServerTest, aServerThatRejectsTheRequestDoesNot) {
  EXPECT_FALSE(isOffered({.hasExtension = true, .majorVersion = 0}));
}

TEST(XServerTest, aServerWithoutTheExtensionDoesNot) {
  EXPECT_FALSE(isOffered({.hasExtension = false, .majorVersion = 2}));
}

TEST(XServerTest, aMissingServerDoesNot) {
  EXPECT_FALSE(offersXInput2("127.0.0.1:59535"));
  EXPECT_FALSE(offersXInput2("no display at all"));
}

TEST(XServerTest, aRealServerOffersIt) {
  QProcess server;
  server.start("Xvfb", {"-displayfd", "1", "-screen", "0", "320x200x24", "-nolisten", "tcp"});
  ASSERT_TRUE(server.waitForReadyRead(20000)) << server.errorString().toStdString();
  const std::string display = ":" + server.readLine().trimmed().toStdString();
  EXPECT_TRUE(offersXInput2(display.c_str()));
  server.terminate();
  server.waitForFinished();
}

}  // namespace
}  // namespace voxtrel
