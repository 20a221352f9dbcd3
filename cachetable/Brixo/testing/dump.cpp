// cachetable-dump SIZE ENTRY-SIZE [KEY DATA] - opens the tests' table, writes an entry if there is
// one to write (data in hexadecimal), and prints the entries in the order of their slots and then
// the free slots in theirs.
#include <Brixo/testing/Tables.h>
#include <algorithm>
#include <cstdio>
#include <string>

int main(int count, char** arguments) {
    using namespace Brixo::Testing;
    if (count != 3 && count != 5) return 2;
    const auto number = [&](int i) { return static_cast<U32>(std::stoul(arguments[i])); };
    const auto table = openTable(number(1), number(2));
    if (count == 5) {
        const std::string digits = arguments[4];
        std::string data;
        for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
            data += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
        if (data.size() != table->entrySize()) return 2;
        write(*table, number(3), data);
    }
    Pairs slots;
    for (const auto& [key, index] : usedSlots(*table)) slots.emplace_back(index, key);
    std::sort(slots.begin(), slots.end());
    for (const auto& [index, key] : slots) {
        std::printf("%u %u", index, key);
        const char* separator = " ";
        for (const char byte : entry(*table, key)) {
            std::printf("%s%02x", separator, static_cast<unsigned>(static_cast<U8>(byte)));
            separator = "";
        }
        std::printf("\n");
    }
    std::printf("free");
    for (const U32 index : freeSlots(*table)) std::printf(" %u", index);
    std::printf("\n");
    return 0;
}
