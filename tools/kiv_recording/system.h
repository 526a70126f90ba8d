#pragma once

#include <string>
#include <vector>

// What the command asks of the system beyond the standard library. From any
// thread.
namespace kiv::tool {

// Whether somebody reads standard error as it is written.
bool isErrorTerminal();

// What follows the program's name, in UTF-8.
std::vector<std::string> utf8Arguments(int argc, char** argv);

// Keeps the bytes of standard output as they are written: no line gets another
// end.
void useBinaryOutput();

// Goes on as the program of that name in this one's directory. Returns where
// there is none, and where programs cannot become others.
void becomeProgramBeside(const std::string& name,
                         const std::vector<std::string>& arguments);

}  // namespace kiv::tool
