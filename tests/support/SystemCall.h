#pragma once

#include <cstdarg>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>

namespace quibel::test {

/// A library's C function of that name, for one of a test that stands in for it.
template <class Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// The mode that follows open's flags, which has one only where a file is made.
inline mode_t openMode(int flags, std::va_list rest) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

}  // namespace quibel::test
