# Every target of ours is built with these. In development a warning is an error; a release must also build
# with compilers that know other warnings.
add_library(voxtrel_warnings INTERFACE)
target_compile_options(
  voxtrel_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                             -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Woverloaded-virtual
                             $<$<CONFIG:Debug>:-Werror>)
