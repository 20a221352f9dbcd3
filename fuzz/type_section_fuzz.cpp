// type_section_fuzz.cpp - any bytes as the file of a shared library.
//
// Promises: the file is refused by a text of one line that names it, or its types are names that do
//           not disturb a terminal. No byte outside of the file is touched: the input ends where
//           its allocation does, and the address sanitizer watches.
#include <Vel/RangeException.h>
#include <Vel/TypeSection.h>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

void promise(bool kept, const char* what) {
    if (kept) return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

bool isHarmless(std::string_view text) {
    return std::ranges::none_of(
        text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        std::size_t bytes = 0;
        for (const Vel::String8& name : Vel::typeSectionOfImage({data, size}, "lib.so")) {
            promise(!name.empty() && isHarmless(name), "a name can be shown");
            bytes += name.length() + 1;
        }
        // Sections may overlap, but only as many as have a header of their own.
        promise(bytes <= size * (size / 40), "names come from the file");
    } catch (const Vel::RangeException& refused) {
        const std::string_view why = refused.text();
        promise(why.starts_with("cannot read the types of 'lib.so': ") && isHarmless(why),
                "a refusal is one line that names the file");
    }
    return 0;
}
