# The speech recognition libraries as targets: quillback_pocketsphinx, and quillback_whisper_library if
# QUILLBACK_WHISPER is ON.

# PocketSphinx's pkg-config file names a folder that Debian does not have.
find_path(POCKETSPHINX_INCLUDE pocketsphinx.h PATH_SUFFIXES pocketsphinx REQUIRED)
find_path(SPHINXBASE_INCLUDE sphinxbase/err.h REQUIRED)
find_library(POCKETSPHINX_LIBRARY pocketsphinx REQUIRED)
find_library(SPHINXBASE_LIBRARY sphinxbase REQUIRED)
find_path(QUILLBACK_SPHINX_MODEL en-us.lm.bin PATHS /usr/share /usr/local/share
          PATH_SUFFIXES pocketsphinx/model/en-us REQUIRED)
add_library(quillback_pocketsphinx INTERFACE)
target_include_directories(quillback_pocketsphinx SYSTEM
                           INTERFACE "${POCKETSPHINX_INCLUDE}" "${SPHINXBASE_INCLUDE}"
                                     "${SPHINXBASE_INCLUDE}/sphinxbase")
target_link_libraries(quillback_pocketsphinx INTERFACE "${POCKETSPHINX_LIBRARY}" "${SPHINXBASE_LIBRARY}")

include(cmake/Whisper.cmake)
