# Voxtrel.app: an agent without a Dock icon. The engine for macOS is another project's and not part of the
# build; a build that is told where it is takes it into the bundle, where the application looks first.
set(VOXTREL_ENGINE "" CACHE FILEPATH "The quillback program to put into Voxtrel.app")
set(VOXTREL_ICNS "" CACHE FILEPATH "The icon of Voxtrel.app; script/package-macos makes it")
set(VOXTREL_UPDATE_FEED "" CACHE STRING "Where Sparkle looks for updates (SUFeedURL)")
set(VOXTREL_UPDATE_KEY "" CACHE STRING "The public key of the updates (SUPublicEDKey)")
find_library(SPARKLE Sparkle DOC "Sparkle.framework; without it the application has no updater")

set(VOXTREL_UPDATE_KEYS "")
if(VOXTREL_UPDATE_FEED AND VOXTREL_UPDATE_KEY)
  # An address may have ampersands, which XML does not take as they are.
  string(REPLACE "&" "&amp;" feed "${VOXTREL_UPDATE_FEED}")
  set(VOXTREL_UPDATE_KEYS "<key>SUFeedURL</key><string>${feed}</string>\
<key>SUPublicEDKey</key><string>${VOXTREL_UPDATE_KEY}</string>")
endif()
set(info "${CMAKE_CURRENT_BINARY_DIR}/Info.plist")
configure_file("${PROJECT_SOURCE_DIR}/packaging/macos/Info.plist.in" "${info}" @ONLY)
set_target_properties(voxtrel PROPERTIES MACOSX_BUNDLE ON OUTPUT_NAME Voxtrel
                                         MACOSX_BUNDLE_INFO_PLIST "${info}" LINKER_LANGUAGE OBJCXX)

# put_into_bundle(<folder in Contents> <file or folder>)
function(put_into_bundle folder source)
  set(target "$<TARGET_BUNDLE_CONTENT_DIR:voxtrel>/${folder}")
  add_custom_command(TARGET voxtrel POST_BUILD COMMAND mkdir -p "${target}"
                     COMMAND cp -R "${source}" "${target}/" VERBATIM)
endfunction()

if(VOXTREL_ENGINE)
  put_into_bundle(MacOS "${VOXTREL_ENGINE}")
endif()
if(VOXTREL_ICNS)
  put_into_bundle(Resources "${VOXTREL_ICNS}")
endif()
if(SPARKLE)
  # No symbol of it is named: the application asks for its class.
  get_filename_component(sparkle_folder "${SPARKLE}" DIRECTORY)
  # CMake's own properties for the path are lost where Objective-C++ links and Objective-C is no language.
  target_link_options(voxtrel PRIVATE "-F${sparkle_folder}" "LINKER:-needed_framework,Sparkle"
                                      "LINKER:-rpath,@executable_path/../Frameworks")
  put_into_bundle(Frameworks "${SPARKLE}")
endif()
install(TARGETS voxtrel BUNDLE DESTINATION .)
