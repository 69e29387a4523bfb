#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "quillback/loop/PathArrival.h"
#include "support/PollLoop.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

class PathArrivalTest : public ::testing::Test {
 protected:
  void await(const char* path) {
    arrival_ = std::make_unique<PathArrival>(folder_.path() / path, loop_, [this] { ++arrivals_; });
  }
  void make(const char* path) const { std::ofstream(folder_.path() / path) << "x"; }
  void settle() { loop_.runFor(std::chrono::milliseconds(30)); }

  test::PollLoop loop_;
  ScratchFolder folder_;
  int arrivals_ = 0;
  std::unique_ptr<PathArrival> arrival_;
};

TEST_F(PathArrivalTest, AFileIsReportedWhenItIsMadeAndAgainWhenItIsMadeAgain) {
  await("socket");
  make("other");
  settle();
  EXPECT_EQ(arrivals_, 0);
  make("socket");
  settle();
  EXPECT_EQ(arrivals_, 1);
  fs::remove(folder_.path() / "socket");
  settle();
  EXPECT_EQ(arrivals_, 1);
  make("socket");
  settle();
  EXPECT_EQ(arrivals_, 2);
}

TEST_F(PathArrivalTest, WhatIsThereAlreadyIsNotReported) {
  make("socket");
  await("socket");
  settle();
  EXPECT_EQ(arrivals_, 0);
}

TEST_F(PathArrivalTest, MissingFoldersMayComeOneByOne) {
  await("a/b/socket");
  for (const char* folder : {"a", "a/b"}) {
    fs::create_directory(folder_.path() / folder);
    settle();
    EXPECT_EQ(arrivals_, 0);
  }
  make("a/b/socket");
  settle();
  EXPECT_EQ(arrivals_, 1);
}

TEST_F(PathArrivalTest, MissingFoldersMayComeAllAtOnce) {
  await("a/b/socket");
  fs::create_directories(folder_.path() / "a/b");
  make("a/b/socket");
  settle();
  EXPECT_EQ(arrivals_, 1);
}

TEST_F(PathArrivalTest, TheReportMayDestroyIt) {
  arrival_ = std::make_unique<PathArrival>(folder_.path() / "socket", loop_, [this] {
    ++arrivals_;
    arrival_.reset();
  });
  make("socket");
  settle();
  EXPECT_EQ(arrivals_, 1);
  EXPECT_EQ(arrival_, nullptr);
}

}  // namespace
}  // namespace voxtrel::quillback
