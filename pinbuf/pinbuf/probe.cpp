// probe.cpp - a client of libpinbuf in a process of its own, for tests and to look at a folder.
//
//   pinbuf-probe alloc NAME SIZE OWNER   the physical address
//   pinbuf-probe write NAME TEXT         maps the region and writes TEXT at its beginning
//   pinbuf-probe list                    one line each: name, owner, address, size, whether it was
//   made here
// Exit status 1 when a call failed; the library has said why.
//
// Test: none; a program of the tests.
#include <pinbuf/pinbuf.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

int main(int count, char** arguments) {
    const std::string_view command = count > 1 ? arguments[1] : "";
    if (command == "alloc" && count == 5) {
        const auto size = static_cast<unsigned>(std::strtoul(arguments[3], nullptr, 0));
        const unsigned address = pinbuf_alloc_func(arguments[2], size, arguments[4]);
        std::printf("0x%08x\n", address);
        return address == 0 ? 1 : 0;
    }
    if (command == "write" && count == 4) {
        void* const region = pinbuf_map(arguments[2], 1, 0, 0);
        if (region == nullptr) return 1;
        std::memcpy(region, arguments[3], std::strlen(arguments[3]));
        return 0;
    }
    if (command == "list" && count == 2) {
        const pinbuf_visitor print = [](const pinbuf_region* region, void*) {
            std::printf("%s\t%s\t0x%08x\t%u\t%d\n", region->name, region->owner,
                        region->physical_address, region->size_bytes, region->made_here);
            return 0;
        };
        return pinbuf_list(print, nullptr) < 0 ? 1 : 0;
    }
    std::fputs("pinbuf-probe alloc NAME SIZE OWNER | write NAME TEXT | list\n", stderr);
    return 2;
}
