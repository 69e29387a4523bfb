# Every target of ours is built with these; a warning is an error.
add_library(voxtrel_warnings INTERFACE)
target_compile_options(
  voxtrel_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                             -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Woverloaded-virtual -Werror)
