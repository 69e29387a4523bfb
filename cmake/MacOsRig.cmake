# The rig: GNUstep with ARC, blocks and libdispatch, built by clang 14, and doubles for what it lacks.
find_program(CMAKE_OBJCXX_COMPILER clang++-14 REQUIRED)
if(NOT CMAKE_OBJCXX_COMPILER_LAUNCHER)
  set(CMAKE_OBJCXX_COMPILER_LAUNCHER "${CMAKE_CXX_COMPILER_LAUNCHER}")
endif()
# Clang names and begins headers that are compiled once in a way of its own, of all languages. GCC finds none
# of that name.
set(pch_extension "${CMAKE_PCH_EXTENSION}")
set(pch_prologue "${CMAKE_PCH_PROLOGUE}")
enable_language(OBJCXX)
set(CMAKE_PCH_EXTENSION "${pch_extension}")
set(CMAKE_PCH_PROLOGUE "${pch_prologue}")

# Unpacked once; its configuration names the folder in which it was built.
set(rig_prefix "${CMAKE_BINARY_DIR}/macos-rig/prefix")
if(NOT EXISTS "${rig_prefix}/lib")
  file(ARCHIVE_EXTRACT INPUT "${VOXTREL_MACOS_RIG}/rig.tar.xz" DESTINATION "${CMAKE_BINARY_DIR}/macos-rig")
  set(rig_config "${rig_prefix}/etc/GNUstep/GNUstep.conf")
  file(READ "${rig_config}" text)
  string(REGEX MATCH "GNUSTEP_SYSTEM_TOOLS=([^\n]*)/bin\n" ignored "${text}")
  string(REPLACE "${CMAKE_MATCH_1}" "${rig_prefix}" text "${text}")
  file(WRITE "${rig_config}" "${text}")
endif()

# Headers of the frameworks that GNUstep does not have, by the names that sources include.
set(rig_headers "${CMAKE_BINARY_DIR}/macos-rig/headers")
file(MAKE_DIRECTORY "${rig_headers}/os")
foreach(framework UserNotifications ServiceManagement Accelerate AVFAudio AVFoundation)
  file(CREATE_LINK "${VOXTREL_MACOS_CHECK}/stub_sdk/Frameworks/${framework}.framework/Headers"
       "${rig_headers}/${framework}" SYMBOLIC)
endforeach()
file(CREATE_LINK "${VOXTREL_MACOS_CHECK}/stub_sdk/include/os/log.h" "${rig_headers}/os/log.h" SYMBOLIC)

# What the adapters use and the rig lacks.
set(rig_additions "${PROJECT_SOURCE_DIR}/tests/support/macos/rig")

target_compile_options(
  voxtrel_macos_sdk
  INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-runtime=gnustep-2.2;-fexceptions;-fobjc-exceptions;-pthread;\
-D_NATIVE_OBJC_EXCEPTIONS;-DGNUSTEP;-DGNUSTEP_BASE_LIBRARY=1;-DGNU_GUI_LIBRARY=1;-DGNUSTEP_RUNTIME=1;\
-D_NONFRAGILE_ABI=1;-D_GNU_SOURCE;-fconstant-string-class=NSConstantString;\
-Wno-deprecated-declarations;-Wno-deprecated-anon-enum-enum-conversion;\
-include;${rig_additions}/MoreAppKit.h>")
target_include_directories(voxtrel_macos_sdk SYSTEM INTERFACE "${rig_additions}" "${rig_headers}"
                                                              "${rig_prefix}/include"
                                                              "${VOXTREL_MACOS_RIG}/shim")
target_link_libraries(voxtrel_macos_sdk INTERFACE "-L${rig_prefix}/lib" gnustep-gui gnustep-base objc
                                                  dispatch pthread m)
target_link_options(voxtrel_macos_sdk INTERFACE -fuse-ld=lld "LINKER:-rpath,${rig_prefix}/lib")

# The doubles; objects, because categories are in no symbol that a linker would look for.
file(GLOB rig_shims CONFIGURE_DEPENDS "${VOXTREL_MACOS_RIG}/shim/*.mm" "${rig_additions}/*.mm")
add_library(voxtrel_macos_shims OBJECT EXCLUDE_FROM_ALL ${rig_shims})
set_target_properties(voxtrel_macos_shims PROPERTIES EXPORT_COMPILE_COMMANDS OFF)
target_link_libraries(voxtrel_macos_shims PRIVATE voxtrel_macos_sdk)
target_compile_options(voxtrel_macos_shims PRIVATE -w)
