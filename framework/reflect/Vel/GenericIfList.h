// GenericIfList.h - arguments for a constructor, a function or an insertion: adapters in order.
//
//     Vel::Ptr<Vel::GenericIf::List> arguments = new Vel::GenericIf::List;
//     arguments->push(Vel::Builtin<Vel::U16>::genericIf(3));
#pragma once

#include <Vel/Export.h>
#include <Vel/GenericIf.h>
#include <Vel/Integers.h>
#include <Vel/LinkedQueue.h>
#include <Vel/Ptr.h>

namespace Vel {

class VEL_API GenericIf::List : public GenericIf {
public:
    using Queue = LinkedQueue<LinkedQueueEntry<GenericIf>, GenericIf, Ptr<GenericIf>>;

    List();
    // The same adapters, in order.
    List(const List& other);
    List& operator=(const List&) = delete;
    ~List() override;

    // Appends. A null stands for an argument that is missing.
    void push(const Ptr<GenericIf>& member) { members_.push(member); }

    U32 members() const noexcept { return members_.members(); }

    Queue::Iterator iterator() const noexcept { return members_.iterator(); }

    Queue::Iterator begin() const noexcept { return members_.begin(); }

    Queue::Iterator end() const noexcept { return members_.end(); }

    void deleteAll() { members_.deleteAll(); }

    // "Vel::GenericIf::List_", without attributes.
    VelType* type() const override;
    static VelType* _fwkType();

    Ptr<GenericIf> clone() override { return new List(*this); }

    Ptr<const GenericIf> clone() const override { return new List(*this); }

    // "[7, 'name', None]"
    String8 strRep() const override;
    // Its own address, for its own type.
    const void* voidPtr(const VelType* type) const override;
    // Takes the members of the List at the address.
    void voidPtrIs(const void* value, const VelType* type) override;

    // The list that an adapter is. Throws "List" for null, "Vel::GenericIf::List_" for an adapter
    // of something else.
    static const List& of(const GenericIf* arguments);

private:
    Queue members_;
};

} // namespace Vel
