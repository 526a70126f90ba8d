#pragma once

#include <string>

namespace kiv::test {

// Sets a variable of this process; an empty value removes it.
void setEnvironment(const std::string& name, const std::string& value);

}  // namespace kiv::test
