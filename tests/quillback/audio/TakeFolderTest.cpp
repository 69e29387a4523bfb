#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "quillback/audio/TakeFolder.h"
#include "support/ScratchFolder.h"
#include "support/WholeWav.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::vector<std::int16_t> kSound = {0, 1, -1, 32767, -32768, 300};

struct TakeFolderTest : testing::Test {
  /// Of all files in the folder.
  std::vector<std::string> files() const {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(folder)) {
      found.push_back(entry.path().filename().string());
    }
    std::ranges::sort(found);
    return found;
  }
  /// Of the recordings that are there to be recognised.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const StoredTake& take : store.takes()) {
      found.push_back(fs::path(take.path).filename().string());
    }
    return found;
  }
  static mode_t modeOf(const fs::path& path) {
    struct stat facts {};
    EXPECT_EQ(::stat(path.c_str(), &facts), 0);
    return facts.st_mode & 07777;
  }

  ScratchFolder scratch;
  fs::path folder = scratch.path() / "quillback";
  TakeFolder store{folder.string()};
};

TEST_F(TakeFolderTest, ARecordingIsAWavFileThatOnlyItsUserMayRead) {
  ASSERT_TRUE(store.keep(kSound));
  ASSERT_THAT(names(), ElementsAre("take-1.wav"));
  EXPECT_EQ(modeOf(folder), 0700U);
  EXPECT_EQ(modeOf(folder / "take-1.wav"), 0600U);
  const test::WavSound wav = test::readWav(store.takes()[0].path).value();
  EXPECT_EQ(wav.rateHz, 16000);
  EXPECT_EQ(wav.note, "");
  EXPECT_THAT(test::resampled(wav.samples, wav.rateHz), ElementsAreArray(kSound));
}

TEST_F(TakeFolderTest, ItStaysUntilItsWordsWereDelivered) {
  auto first = store.keep(kSound);
  auto second = store.keep(kSound);
  EXPECT_THAT(files(), ElementsAre("take-1.wav", "take-2.wav"));
  second.reset();
  EXPECT_THAT(files(), ElementsAre("take-1.wav", "take-2.wav"));
  first->delivered();
  EXPECT_THAT(files(), ElementsAre("take-2.wav"));
  first->delivered();
  first->gaveNoWords();
  EXPECT_THAT(files(), ElementsAre("take-2.wav"));
}

TEST_F(TakeFolderTest, OneThatIsBeingRecognisedIsNotThereForOthers) {
  auto first = store.keep(kSound);
  const auto second = store.keep(kSound);
  EXPECT_THAT(names(), IsEmpty());
  first.reset();
  EXPECT_THAT(names(), ElementsAre("take-1.wav"));
  const auto retried = store.takes();
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(TakeFolderTest, OneWithoutWordsStaysUntilTheNextIsKept) {
  auto first = store.keep(kSound);
  const auto second = store.keep(kSound);
  first->gaveNoWords();
  EXPECT_THAT(files(), ElementsAre("take-1-no-words.wav", "take-2.wav"));
  first.reset();
  store.takes()[0].kept->gaveNoWords();
  EXPECT_THAT(files(), ElementsAre("take-1-no-words.wav", "take-2.wav"));
  const auto third = store.keep(kSound);
  EXPECT_THAT(files(), ElementsAre("take-2.wav", "take-3.wav"));
}

TEST_F(TakeFolderTest, AnOldHandleNeverRemovesALaterRecording) {
  const auto first = store.keep(kSound);
  first->delivered();
  ASSERT_TRUE(store.keep(kSound));
  first->delivered();
  EXPECT_THAT(names(), ElementsAre("take-2.wav"));
}

TEST_F(TakeFolderTest, ALaterProcessGoesOnWhereTheLastOneEnded) {
  for (int i = 0; i < 10; ++i) ASSERT_TRUE(store.keep(kSound));
  TakeFolder next{folder.string()};
  next.takes()[0].kept->delivered();
  ASSERT_TRUE(next.keep(kSound));
  EXPECT_EQ(names().size(), 10U);
  EXPECT_EQ(names().front(), "take-2.wav");
  EXPECT_EQ(names().back(), "take-11.wav");
}

TEST_F(TakeFolderTest, OnlyTheNewestAreKept) {
  for (std::size_t i = 0; i < TakeFolder::kMaxFiles + 3; ++i) ASSERT_TRUE(store.keep(kSound));
  EXPECT_EQ(names().size(), TakeFolder::kMaxFiles);
  EXPECT_EQ(names().front(), "take-4.wav");
}

TEST_F(TakeFolderTest, OtherFilesAreLeftAlone) {
  for (const char* name :
       {"take-.wav", "take-0.wav", "take-1.wav.part", "draft-1", "take-x.wav", "notes.txt",
        "take--1.wav", "take-99999999999.wav", "take-999999999.wav"}) {
    scratch.write(std::string("quillback/") + name, "x");
  }
  EXPECT_THAT(names(), IsEmpty());
  ASSERT_TRUE(store.keep(kSound));
  EXPECT_THAT(names(), ElementsAre("take-1.wav"));
}

TEST_F(TakeFolderTest, AnOpenFolderIsClosedToOthers) {
  fs::create_directory(folder);
  fs::permissions(folder, fs::perms::all);
  ASSERT_TRUE(store.keep(kSound));
  EXPECT_EQ(modeOf(folder), 0700U);
}

TEST_F(TakeFolderTest, NothingIsKeptWhereItCannotBe) {
  EXPECT_FALSE(TakeFolder("").keep(kSound));
  EXPECT_THAT(TakeFolder("").takes(), IsEmpty());
  EXPECT_FALSE(TakeFolder("/nowhere/quillback").keep(kSound));
  scratch.write("file", "x");
  EXPECT_FALSE(TakeFolder((scratch.path() / "file").string()).keep(kSound));
  fs::create_directory_symlink(scratch.path(), scratch.path() / "link");
  EXPECT_FALSE(TakeFolder((scratch.path() / "link").string()).keep(kSound));
  EXPECT_FALSE(TakeFolder("/proc/self").keep(kSound));
}

TEST_F(TakeFolderTest, TheFolderIsInTheRunTimeFolder) {
  setenv("XDG_RUNTIME_DIR", "/run/user/7", 1);
  EXPECT_EQ(takeFolderPath(), "/run/user/7/quillback");
  setenv("XDG_RUNTIME_DIR", "run", 1);
  EXPECT_EQ(takeFolderPath(), "");
  unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(takeFolderPath(), "");
}

}  // namespace
}  // namespace voxtrel::quillback
