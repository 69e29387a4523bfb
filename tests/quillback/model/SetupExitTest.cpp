#include <gtest/gtest.h>

#include <cerrno>
#include <set>

#include "quillback/model/SetupExit.h"

namespace voxtrel::quillback {
namespace {

TEST(SetupExits, AreDistinctAscendingAndExplained) {
  std::set<int> numbers;
  std::set<std::string_view> meanings;
  int last = -1;
  for (const SetupExitMeaning& entry : setupExits()) {
    const int number = static_cast<int>(entry.exit);
    EXPECT_GT(number, last);
    last = number;
    numbers.insert(number);
    meanings.insert(entry.meaning);
    EXPECT_FALSE(entry.meaning.empty());
  }
  EXPECT_EQ(numbers, (std::set<int>{0, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(meanings.size(), numbers.size());
}

TEST(SetupExits, TellAFullDiskFromOneThatCannotBeWritten) {
  for (const int error : {ENOSPC, EDQUOT, EFBIG}) {
    EXPECT_EQ(writeFailure(error, "/store").exit, SetupExit::noSpace);
  }
  for (const int error : {EACCES, EROFS, EIO, ENOTDIR, EINVAL}) {
    EXPECT_EQ(writeFailure(error, "/store").exit, SetupExit::unwritable);
  }
  EXPECT_NE(writeFailure(EROFS, "/store").line.find("/store"), std::string::npos);
}

}  // namespace
}  // namespace voxtrel::quillback
