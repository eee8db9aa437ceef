#pragma once

// The library's version, for conditions of the preprocessor. What a program runs with may be
// another build than it was compiled for: kap::library().fileVersion tells that one.
#define KAPUTIL_VERSION_MAJOR 2
#define KAPUTIL_VERSION_MINOR 6
#define KAPUTIL_VERSION_PATCH 0
#define KAPUTIL_VERSION_BUILD 5
#define KAPUTIL_VERSION "2.6.0.5"
