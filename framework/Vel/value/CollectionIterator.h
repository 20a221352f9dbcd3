// CollectionIterator.h - the iterator of one collection attribute of one type, as adapters hand it out.
#pragma once

#include <Vel/AttributeIterator.h>
#include <Vel/GenericIf.h>
#include <Vel/Ptr.h>
#include <Vel/value/ArgumentFrom.h>
#include <Vel/value/CollectionAccess.h>
#include <cstddef>

namespace Vel::detail {

template <class T, std::size_t index>
class CollectionIterator : public AttributeIterator {
public:
    // The object lives as long as its adapter.
    static Ptr<AttributeIterator> make(const Ptr<GenericIf>& owner, T& object) {
        return new CollectionIterator(owner, object);
    }

    bool nonNull() const override { return !Access::isAtEnd(position_); }

    Ptr<GenericIf> obj(bool isConst) const override {
        return adapterOf(members_.valueAt(position_), isConst);
    }

    Ptr<GenericIf> key() const override { return adapterOf(members_.keyAt(position_), false); }

    void inc() override { members_.advance(position_); }

    void del() override { members_.del(position_); }

    Ptr<AttributeIterator> clone() const override { return new CollectionIterator(*this); }

private:
    using Access = CollectionAccess<T, index>;

    CollectionIterator(const Ptr<GenericIf>& owner, T& object)
        : owner_(owner), members_(object), position_(members_.begin()) {}

    Ptr<GenericIf> owner_;
    Access members_;
    typename Access::Position position_;
};

} // namespace Vel::detail
