# The libraries that the application uses on a Mac, from Homebrew: tl-expected; for the tests googletest and
# icu4c.
find_package(Threads REQUIRED)
find_path(TL_EXPECTED_INCLUDE_DIR tl/expected.hpp REQUIRED)
include_directories(SYSTEM "${TL_EXPECTED_INCLUDE_DIR}")

if(VOXTREL_TESTS)
  find_package(GTest REQUIRED)
  find_package(ICU REQUIRED COMPONENTS uc i18n)
endif()
