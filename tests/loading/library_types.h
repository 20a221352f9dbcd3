// library_types.h - the types that libBrixoTypes says it has, in the order in which it says so:
// taken from docs/schema.md, which has them as they are registered.
#pragma once

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

inline std::string nameSpaceOf(const std::string& type) {
    const std::size_t colons = type.find("::");
    return colons == std::string::npos ? "" : type.substr(0, colons);
}

// In the order of registration.
inline std::vector<std::string> registeredTypes() {
    std::ifstream page(BRIXO_SOURCE_DIR "/docs/schema.md");
    std::vector<std::string> types;
    for (std::string line; std::getline(page, line);)
        if (line.rfind("## ", 0) == 0) types.push_back(line.substr(3));
    return types;
}

// The file has them namespace by namespace, and in each the last one first.
inline std::vector<std::string> libraryTypes() {
    std::vector<std::string> types = registeredTypes();
    for (auto first = types.begin(); first != types.end();) {
        const auto last = std::find_if(first, types.end(), [first](const std::string& type) {
            return nameSpaceOf(type) != nameSpaceOf(*first);
        });
        std::reverse(first, last);
        first = last;
    }
    return types;
}
