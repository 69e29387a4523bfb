#pragma once
// The library's header has a member named `explicit`, a keyword of C++.
#pragma GCC system_header
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
