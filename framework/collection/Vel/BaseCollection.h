// BaseCollection.h - a collection as its text form sees it: so many members, and the text of each,
// in order.
//
// Text: the members' own texts as a Python list: [a, b, c]
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/String8.h>
#include <memory>

namespace Vel {

class VEL_API BaseCollection {
public:
    // Walks the texts. The collection does not change while it is used.
    class VEL_API StrepIterator {
    public:
        StrepIterator(const StrepIterator&) = delete;
        StrepIterator& operator=(const StrepIterator&) = delete;
        virtual ~StrepIterator();

        // Whether it stands on a member.
        virtual bool isValid() const = 0;
        // The text form of the member on which it stands.
        virtual String8 strep() const = 0;
        virtual void advance() = 0;

    protected:
        StrepIterator() = default;
    };

    virtual ~BaseCollection();

    virtual U32 members() const = 0;
    virtual std::unique_ptr<StrepIterator> strepIterator() const = 0;

protected:
    BaseCollection() = default;
    BaseCollection(const BaseCollection&) = default;
    BaseCollection& operator=(const BaseCollection&) = default;
};

VEL_API String8 valueToStrep(const BaseCollection& collection);

} // namespace Vel
