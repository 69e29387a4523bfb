// Compiled into the application where the address sanitizer is.

extern "C" const char* __asan_default_options();

/// A suppressed leak is known by its whole stack, and Qt has no frame pointers. Walking such stacks is slow, so
/// the engine, which the application starts, is without it: it allocates each word of a dictionary.
extern "C" const char* __asan_default_options() {
  return "fast_unwind_on_malloc=0";
}
