#include <cstdlib>
#include <new>

// Functions of the C++ runtime that the library has in smaller versions of its
// own, for the runtime goes into it.

namespace __gnu_cxx {

// Called for an exception that nobody catches. The runtime's own version prints
// the exception's name, and for that alone brings along the demangler, a tenth
// of the library. No exception leaves the library.
void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx

namespace std {

// Called when a lock cannot be had. The runtime's own version brings along the
// texts and categories of all system errors, which nobody sees: an entry turns
// any exception into one status.
[[noreturn]] void __throw_system_error(int);
void __throw_system_error(int) { throw std::bad_alloc(); }

}  // namespace std
