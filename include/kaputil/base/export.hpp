#pragma once

// KAPUTIL_EXPORT marks what programs outside of the library may call: public classes and the
// functions of public headers. Everything else stays hidden within the shared library, so that it
// may change with every build and clashes with no name of a program. A class is marked when a
// program needs more of it than its header has: members that are defined in the library, or the
// identity by which errors and objects are told apart.
#ifdef __ELF__
#define KAPUTIL_EXPORT [[gnu::visibility("default")]]
#else
#define KAPUTIL_EXPORT
#endif
