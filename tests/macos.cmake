# The macOS adapters: on a Mac against its own frameworks, elsewhere against the rig's work-alikes. One test
# of CTest's for each source, named as its suite; all sources make one program.
file(GLOB_RECURSE macos_sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/voxtrel/platform/macos/*.mm")
set(run_macos "${python}" "${CMAKE_CURRENT_SOURCE_DIR}/support/macos/run.py")

if(TARGET voxtrel_macos_sdk)
  file(GLOB macos_support CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/support/macos/*.mm")
  add_executable(macos_tests ${macos_sources} ${macos_support})
  get_property(macos_rooms GLOBAL PROPERTY VOXTREL_MACOS_ROOMS)
  target_include_directories(macos_tests PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(macos_tests PRIVATE ${macos_rooms} voxtrel_overlay voxtrel_macos_sdk GTest::gtest GTest::gmock
                                            voxtrel_warnings)
  set_target_properties(macos_tests PROPERTIES LINKER_LANGUAGE OBJCXX)
  # The macros of the test framework, in Objective-C++.
  target_compile_options(macos_tests PRIVATE -Wno-gnu-zero-variadic-macro-arguments)
  list(APPEND run_macos --program $<TARGET_FILE:macos_tests>)
  if(TARGET voxtrel_macos_shims)
    target_sources(macos_tests PRIVATE $<TARGET_OBJECTS:voxtrel_macos_shims>)
    list(APPEND run_macos --rig "${rig_prefix}")
  endif()
endif()

# They run once, in the build that has them.
if(sanitized)
  return()
endif()
foreach(source IN LISTS macos_sources)
  get_filename_component(suite "${source}" NAME_WE)
  file(STRINGS "${source}" strangers REGEX "^TEST")
  list(FILTER strangers EXCLUDE REGEX "\\(${suite},")
  if(strangers)
    message(FATAL_ERROR "${source}: a suite that is not named as the file would not run: ${strangers}")
  endif()
  add_test(NAME macos.${suite} COMMAND ${run_macos} ${suite})
  set_tests_properties(macos.${suite} PROPERTIES LABELS macos TIMEOUT 120 SKIP_RETURN_CODE 77)
endforeach()
