# The macOS adapters: on a Mac against its own frameworks, elsewhere against the rig's work-alikes. One test
# of CTest's for each source, named as its suite; all sources make one program.
file(GLOB_RECURSE macos_sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/voxtrel/platform/macos/*.mm")
if(APPLE)
  # What a test must grant or refuse, only the rig's doubles let it.
  foreach(source IN LISTS macos_sources)
    file(STRINGS "${source}" doubles REGEX "\"rig_|support/macos/whole/")
    if(doubles)
      list(REMOVE_ITEM macos_sources "${source}")
    endif()
  endforeach()
endif()
set(run_macos "${python}" "${CMAKE_CURRENT_SOURCE_DIR}/support/macos/run.py")

if(TARGET voxtrel_macos_sdk)
  file(GLOB macos_support CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/support/macos/*.mm")
  add_executable(macos_tests ${macos_sources} ${macos_support})
  get_property(macos_rooms GLOBAL PROPERTY VOXTREL_MACOS_ROOMS)
  target_include_directories(macos_tests PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(macos_tests PRIVATE ${macos_rooms} voxtrel_app voxtrel_macos_sdk GTest::gtest GTest::gmock
                                            voxtrel_warnings)
  set_target_properties(macos_tests PROPERTIES LINKER_LANGUAGE OBJCXX VOXTREL_MACOS ON)
  # The macros of the test framework, in Objective-C++.
  target_compile_options(macos_tests PRIVATE -Wno-gnu-zero-variadic-macro-arguments)
  list(APPEND run_macos --program $<TARGET_FILE:macos_tests>)
  if(TARGET voxtrel_macos_shims)
    target_sources(macos_tests PRIVATE $<TARGET_OBJECTS:voxtrel_macos_shims>)
    list(APPEND run_macos --rig "${rig_prefix}")
    # Compiled once, as for the other tests; AppKit's are among them by an option of every source.
    foreach(header gmock/gmock.h gtest/gtest.h filesystem functional memory string vector)
      target_precompile_headers(macos_tests PRIVATE "$<$<COMPILE_LANGUAGE:OBJCXX>:<${header}$<ANGLE-R>>")
    endforeach()
    target_compile_options(macos_tests PRIVATE "SHELL:$<$<COMPILE_LANGUAGE:OBJCXX>:${without_header_times}>")
    # The whole application: in the tests' process, and as a program whose user grants what it asks for.
    file(GLOB whole_support CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/support/macos/whole/*")
    target_sources(macos_tests PRIVATE ${whole_support} support/scripted_engine/ControlSocket.cpp)
    add_executable(macos-voxtrel "${PROJECT_SOURCE_DIR}/src/voxtrel/app/main.cpp" support/macos/Symbols.mm
                                 support/macos/program/User.mm $<TARGET_OBJECTS:voxtrel_macos_shims>)
    target_include_directories(macos-voxtrel PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_libraries(macos-voxtrel PRIVATE ${macos_rooms} voxtrel_app voxtrel_macos_sdk voxtrel_warnings)
    set_target_properties(macos-voxtrel PROPERTIES LINKER_LANGUAGE OBJCXX VOXTREL_MACOS ON UNITY_BUILD OFF)
    add_dependencies(macos_tests macos-voxtrel scripted-engine)
    target_compile_definitions(macos_tests PRIVATE SCRIPTED_ENGINE="$<TARGET_FILE:scripted-engine>"
                                                   MACOS_VOXTREL="$<TARGET_FILE:macos-voxtrel>")
  endif()
endif()

# They run once, in the build that has them.
if(sanitized)
  return()
endif()

# The bundle's property lists, and the script that packs it, as far as that goes without a Mac.
if(NOT APPLE)
  add_test(NAME macos.bundle COMMAND ${python} "${CMAKE_CURRENT_SOURCE_DIR}/configure/test_macos_bundle.py")
  set_tests_properties(macos.bundle PROPERTIES LABELS macos TIMEOUT 240 SKIP_RETURN_CODE 77)
endif()

# Children, with macOS's way to end them with the application. On a Mac these are the "child" tests.
if(TARGET voxtrel_macos_shims)
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/voxtrel/platform/posix/*.cpp")
  add_executable(macos_child_tests ${sources})
  target_precompile_headers(macos_child_tests REUSE_FROM plain_test_headers)
  target_link_libraries(macos_child_tests PRIVATE voxtrel_test_support voxtrel_supervisor voxtrel_download
                                                  voxtrel_platform_posix)
  add_executable(macos-engine-owner support/engine_owner/EngineOwner.cpp)
  target_link_libraries(macos-engine-owner PRIVATE voxtrel_platform_posix voxtrel_warnings)
  set_target_properties(macos_child_tests macos-engine-owner
                        PROPERTIES VOXTREL_MACOS ON LINKER_LANGUAGE OBJCXX UNITY_BUILD OFF)
  add_dependencies(macos_child_tests scripted-engine macos-engine-owner)
  target_compile_definitions(
    macos_child_tests PRIVATE SCRIPTED_ENGINE="$<TARGET_FILE:scripted-engine>"
                              ENGINE_OWNER="$<TARGET_FILE:macos-engine-owner>")
  foreach(suite EndingTest InheritanceTest OutputTest OwnershipTest StartFailureTest)
    add_test(NAME macos.child.${suite} COMMAND macos_child_tests --gtest_filter=${suite}.*)
    set_tests_properties(macos.child.${suite} PROPERTIES LABELS macos TIMEOUT 120)
    set_property(TEST macos.child.${suite} PROPERTY ENVIRONMENT "LD_LIBRARY_PATH=${rig_prefix}/lib")
  endforeach()
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
