// Bar.h - "[#######.............]": how much of a whole there is.
#pragma once

#include <algorithm>
#include <string>

namespace PciAgent {

// Of `width` signs in all. Full only when all is there, and empty only when nothing is.
inline std::string bar(unsigned part, unsigned whole, unsigned width) {
    const unsigned inner = width - 2;
    unsigned filled = 0;
    if (part >= whole)
        filled = inner;
    else if (part != 0)
        filled = std::clamp(static_cast<unsigned>(1ULL * inner * part / whole), 1U, inner - 1);
    return "[" + std::string(filled, '#') + std::string(inner - filled, '.') + "]";
}

} // namespace PciAgent
