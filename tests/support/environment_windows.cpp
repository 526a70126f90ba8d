#include <cstdlib>

#include "support/environment.h"

namespace kiv::test {

void setEnvironment(const std::string& name, const std::string& value) {
  _putenv_s(name.c_str(), value.c_str());
}

}  // namespace kiv::test
