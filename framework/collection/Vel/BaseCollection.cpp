#include <Vel/BaseCollection.h>

namespace Vel {

BaseCollection::~BaseCollection() = default;

BaseCollection::StrepIterator::~StrepIterator() = default;

String8 valueToStrep(const BaseCollection& collection) {
    String8 text = "[";
    const char* separator = "";
    for (const auto it = collection.strepIterator(); it->isValid(); it->advance()) {
        text += separator;
        text += it->strep();
        separator = ", ";
    }
    text += "]";
    return text;
}

} // namespace Vel
