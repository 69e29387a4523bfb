# What makes programs that people run harder to break into: our targets only, and only in release builds,
# because a sanitizer or a debugger is in the way of some of it. script/build and script/lint check the programs.
#
# Debian's hardening-check finds two things less on Debian 12. "Control flow integrity: no": the start files of
# its C library (crt1.o, crti.o, crtn.o) have no mark of it, and the linker keeps the mark only where every file
# has it; our code is compiled for it. "Stack clash protection: unknown": it looks for the loop that touches the
# pages of a very large stack frame; our frames are small enough to be touched without one.
include(CheckCXXCompilerFlag)

add_library(voxtrel_hardening INTERFACE)
target_link_libraries(voxtrel_warnings INTERFACE voxtrel_hardening)
set(released $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)

# Level 3 also knows sizes that are known at run time only. Distributions may have set another level.
set(fortify 2)
if((CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12)
   OR (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 15))
  set(fortify 3)
endif()
# For the folders included below. It stands before the -fPIC that some builds of Qt insist on.
add_compile_options("$<${released}:-fPIE>")
target_compile_options(
  voxtrel_hardening
  INTERFACE "$<${released}:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=${fortify};-D_GLIBCXX_ASSERTIONS>")
# Apple's linker does all this unasked, and refuses what it does not know.
if(NOT APPLE)
  target_link_options(voxtrel_hardening INTERFACE "$<${released}:-pie;-Wl,-z,relro;-Wl,-z,now>")
endif()

# The processor's own branch protection has a flag of its own on each architecture.
foreach(flag -fstack-clash-protection -fcf-protection=full -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "voxtrel_has${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    target_compile_options(voxtrel_hardening INTERFACE "$<${released}:${flag}>")
  endif()
endforeach()
