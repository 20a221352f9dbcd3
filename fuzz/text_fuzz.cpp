// text_fuzz.cpp - any bytes as the text of any value type.
//
// Promises: a text is read, or refused by a RangeException that says why. What was read prints as a
//           text that is read back as the same value.
// Left out: naming a collection is a fatal assertion by decision (docs/text-form.md), so texts that
//           could do it are not asked.
#include "Fuzz.h"
#include <algorithm>
#include <vector>

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

// How often a text may say the name of a collection without naming the collection: the name of a
// value around it, too, or a part of such a name.
struct Collection {
    std::string name;
    std::size_t otherUses;
};

// The collections within the values of a type, each behind the fields that lead to it.
void addCollections(const Vel::VelType& type, std::vector<std::string>& way,
                    std::vector<Collection>& found) {
    for (const Vel::VelAttr* const attr : type.attrs()) {
        if (!attr->flags().has(Vel::VelAttr::AttrFlags::stored)) continue;
        const std::string name(attr->name());
        if (attr->flags().has(Vel::VelAttr::AttrFlags::collection)) {
            std::size_t uses = 0;
            for (const std::string& field : way) uses += countOf(name, field);
            found.push_back({name, uses});
        } else if (attr->type()->isValue()) {
            way.push_back(name);
            addCollections(*attr->type(), way, found);
            way.pop_back();
        }
    }
}

// An escape could hide the name.
template <class T>
bool mayNameCollection(std::string_view text) {
    static const std::vector<Collection> collections = [] {
        std::vector<std::string> way;
        std::vector<Collection> found;
        addCollections(*Vel::typeOf<T>(), way, found);
        return found;
    }();
    return std::any_of(collections.begin(), collections.end(), [text](const Collection& one) {
        return text.find('\\') != text.npos || countOf(one.name, text) > one.otherUses;
    });
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
    const Check check{{reinterpret_cast<const char*>(data) + 1, size - 1}};
    fuzz::visitType(data[0] % fuzz::ValueTypes::size, check);
    return 0;
}
