// text_fuzz.cpp - any bytes as the text of any value type.
//
// Promises: a text is read, or refused by a RangeException that says why. What was read prints as a
//           text that is read back as the same value.
// Left out: naming a collection is a fatal assertion by decision (docs/text-form.md), so texts that
//           could do it are not asked.
#include "Fuzz.h"

namespace {

using Vel::String8;

template <class T>
T read(std::string_view text) {
    if constexpr (std::is_enum_v<T>) {
        T value{};
        Vel::strepToValue(String8(text), &value);
        return value;
    } else {
        return Vel::parseWhole<T>(String8(text));
    }
}

std::size_t countOf(std::string_view word, std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) ++count;
    return count;
}

// A data mask calls its collection "mask", and the id that holds a data mask calls that "mask" too.
// An escape could hide the name.
template <class T>
bool mayNameCollection(std::string_view text) {
    if constexpr (std::is_same_v<T, Brixo::RequesterDataMask>)
        return text.find('\\') != text.npos || countOf("mask", text) > 0;
    else if constexpr (std::is_same_v<T, Brixo::LogicalRemoteResourceId>)
        return text.find('\\') != text.npos || countOf("mask", text) > 1;
    else
        return false;
}

struct Check {
    std::string_view text;

    template <class T>
    void operator()() const {
        if (mayNameCollection<T>(text)) return;
        try {
            const T value = read<T>(text);
            const std::string printed = fuzz::textOf(value);
            if (!mayNameCollection<T>(printed))
                fuzz::promise(read<T>(printed) == value, "what prints is read back");
        } catch (const Vel::RangeException& refused) {
            fuzz::promise(!refused.text().view().empty(), "a refusal says why");
        }
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    Check check{{reinterpret_cast<const char*>(data) + 1, size - 1}};
    fuzz::visitType(fuzz::ValueTypes(), data[0] % fuzz::ValueTypes::count, check);
    return 0;
}
