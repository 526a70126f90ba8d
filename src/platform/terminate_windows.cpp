#include <cstdlib>

// What the runtime calls for an exception that nobody catches. Its own version
// prints the exception's name, and for that alone brings along the demangler,
// a tenth of the library. No exception leaves the library.
namespace __gnu_cxx {

void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx
