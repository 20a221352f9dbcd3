// AttributeIterator.h - a place in a collection attribute, without naming the collection's class.
//
// Made by: GenericIf::attributeIterator(); used through the attributeIterator_... operations of an adapter.
// Owns:    a reference to the adapter that made it, and so to what the collection is in.
// Changes: the member it stands on may be removed through it alone; others may come and go.
#pragma once

#include <Vel/Export.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>

namespace Vel {

class GenericIf;

class VEL_API AttributeIterator : public PtrInterface {
public:
    AttributeIterator() = default;
    AttributeIterator(const AttributeIterator&) = default;
    AttributeIterator& operator=(const AttributeIterator&) = delete;
    ~AttributeIterator() override;

    // Whether it stands on a member; the others may be called only then.
    virtual bool nonNull() const = 0;
    // An adapter of the member's value, and of its key.
    virtual Ptr<GenericIf> obj(bool isConst) const = 0;
    virtual Ptr<GenericIf> key() const = 0;
    // Goes on to the next member.
    virtual void inc() = 0;
    // Removes the member, then stands on the next one.
    virtual void del() = 0;
    // Another iterator on the same member.
    virtual Ptr<AttributeIterator> clone() const = 0;
};

} // namespace Vel
