#include "config/StandardOutput.h"

#include <iostream>

void PrintLine(std::string line) {
    line += '\n';
    std::cout << line << std::flush;
}
