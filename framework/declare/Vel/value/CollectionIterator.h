// CollectionIterator.h - the iterator of one collection attribute of one type, as adapters hand it
// out.
//
// Stands: on a key, not on a member: the collection may change in any way. Each call looks the key
//         up.
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/AttributeIterator.h>
#include <Vel/GenericIf.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/value/ArgumentFrom.h>
#include <Vel/value/CollectionAccess.h>
#include <Vel/value/WholeText.h>
#include <cstddef>
#include <optional>
#include <type_traits>

namespace Vel::detail {

template <class T, std::size_t index>
class CollectionIterator : public AttributeIterator {
public:
    // `object` is the owner's value, or the object that it refers to.
    static Ptr<AttributeIterator> make(const Ptr<GenericIf>& owner, T& object) {
        return new CollectionIterator(owner, object);
    }

    bool nonNull() const override { return key_.has_value(); }

    Ptr<GenericIf> obj(bool isConst) const override {
        const Key& key = standsOn();
        if (!members_.has(key)) throwGone(name, wholeText(key));
        return adapterOf(members_.value(key), isConst || owner_->isConst());
    }

    Ptr<GenericIf> key() const override { return adapterOf(standsOn(), false); }

    void inc() override {
        if (key_) key_ = members_.behind(*key_);
    }

    void del() override {
        if (owner_->isConst())
            GenericIf::throwConstException("attempting to modify a const instance");
        const Key key = standsOn(); // whoever is told of the removal may step the iterator
        members_.del(key);
        key_ = members_.behind(key);
    }

    Ptr<AttributeIterator> clone() const override { return new CollectionIterator(*this); }

private:
    using Access = CollectionAccess<T, index>;
    using Key = typename Access::Key;
    static constexpr Name name = attributeAt<T, index>.name;

    CollectionIterator(const Ptr<GenericIf>& owner, T& object) : owner_(owner), members_(object) {
        if constexpr (std::is_base_of_v<PtrInterface, T>) object_ = &object;
        const typename Access::Position first = members_.begin();
        if (!Access::isAtEnd(first)) key_ = members_.keyAt(first);
    }

    const Key& standsOn() const {
        if (!key_) throwAtEnd(name);
        return *key_;
    }

    Ptr<GenericIf> owner_;     // holds the value
    Ptr<PtrInterface> object_; // the owner may come to refer to another one
    Access members_;
    std::optional<Key> key_; // none behind the last member
};

} // namespace Vel::detail
