// AttributeIterator.h - a place in a collection attribute, without naming the collection's class.
//
// Made by: GenericIf::attributeIterator(); used through the attributeIterator_... operations of an
//          adapter.
// Owns:    a reference to the adapter that made it, and to the object that the collection is in.
// Changes: members may come and go in any way while it stands: it stands on a key, and steps to the
//          first member that is behind this key then. A member that comes behind it is met, one
//          that comes before it is not.
// Errors:  ReflectionException; each call says when.
// Test: none; an interface; GenericIf_test.cpp tests its implementation.
#pragma once

#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>

namespace Vel {

class GenericIf;

class VEL_API AttributeIterator : public PtrInterface {
public:
    AttributeIterator() = default;
    AttributeIterator(const AttributeIterator&) = default;
    AttributeIterator& operator=(const AttributeIterator&) = delete;
    ~AttributeIterator() override;

    // Whether it stands on a key: of a member, or of one that was removed since. False behind the
    // last member, from where it does not come back.
    virtual bool nonNull() const = 0;
    // An adapter of the member's value, const if the iterator's own adapter is. Refused behind the
    // last member, and for a member that is gone.
    virtual Ptr<GenericIf> obj(bool isConst) const = 0;
    // An adapter of the key. Refused behind the last member.
    virtual Ptr<GenericIf> key() const = 0;
    // Goes on to the next member; behind the last it stays there.
    virtual void inc() = 0;
    // Removes the member, if it is not gone, then stands on the next one. Refused behind the last
    // member, and if the iterator's own adapter is const.
    virtual void del() = 0;
    // Another iterator on the same key.
    virtual Ptr<AttributeIterator> clone() const = 0;

protected:
    [[noreturn]] static void throwAtEnd(Name attribute);
    [[noreturn]] static void throwGone(Name attribute, const String8& key);
};

} // namespace Vel
