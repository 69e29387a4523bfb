#include <gtest/gtest.h>

#include <cerrno>

#include "quillback/model/SetupFailure.h"

namespace voxtrel::quillback {
namespace {

SetupFailure failureOf(int number) {
  return fileFailure({number, std::generic_category()}, "/store");
}

TEST(SetupFailureTest, AFullDiskIsToldFromOneThatCannotBeWritten) {
  for (const int number : {ENOSPC, EDQUOT, EFBIG}) {
    EXPECT_EQ(failureOf(number).exit, SetupExit::noSpace);
  }
  for (const int number : {EACCES, EROFS, EIO, ENOTDIR, EINVAL}) {
    EXPECT_EQ(failureOf(number).exit, SetupExit::unwritable);
  }
  EXPECT_NE(failureOf(EROFS).line.find("/store"), std::string::npos);
}

TEST(SetupFailureTest, ARequestedStopIsAnInterruption) {
  EXPECT_EQ(failureOf(ECANCELED).exit, SetupExit::interrupted);
}

}  // namespace
}  // namespace voxtrel::quillback
