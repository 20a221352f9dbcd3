#include <Vel/AttributeIterator.h>

#include <Vel/GenericIf.h>
#include <Vel/ReflectionException.h>

namespace Vel {

AttributeIterator::~AttributeIterator() = default;

void AttributeIterator::throwAtEnd(Name attribute) {
    throw ReflectionException("an iterator over " + String8(attribute) +
                                  " stands behind the last member",
                              Exception::Id::operation);
}

void AttributeIterator::throwGone(Name attribute, const String8& key) {
    throw ReflectionException("the member of " + String8(attribute) + " under " + key + " is gone",
                              Exception::Id::operation);
}

} // namespace Vel
