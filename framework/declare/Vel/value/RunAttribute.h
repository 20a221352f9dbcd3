// RunAttribute.h - what each kind of attribute does with an operation: written once, for every
// type's every attribute.
//
// The object is const in truth when its adapter is: the adapter has refused every operation that
// modifies before.
//
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/AttributeOp.h>
#include <Vel/GenericIf.h>
#include <Vel/GenericIfList.h>
#include <Vel/Ptr.h>
#include <Vel/value/ArgumentFrom.h>
#include <Vel/value/AttributeTraits.h>
#include <Vel/value/CollectionAccess.h>
#include <cstddef>
#include <functional>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Vel::detail {

// Takes a list's members one after another, by the names of the arguments.
class ListReader {
public:
    explicit ListReader(const GenericIf* arguments)
        : position_(GenericIf::List::of(arguments).iterator()) {}

    const GenericIf* peek() const noexcept {
        return position_ ? position_.member().ptr() : nullptr;
    }

    template <class T>
    T next(Name name) {
        T value = argumentFrom<T>(peek(), name);
        if (position_) ++position_;
        return value;
    }

    // Nothing may be left.
    void end(Name owner) const {
        if (position_) GenericIf::throwUnknownArgException(owner);
    }

private:
    GenericIf::List::Queue::Iterator position_;
};

// Reads T's constructor arguments and gives them to `make`.
template <class T, class Make, std::size_t... i>
auto constructWith(ListReader& list, Name owner, Make make, std::index_sequence<i...>) {
    // Braces: the arguments are read from the left.
    std::tuple<ConstructorArgument<T, i>...> arguments{
        list.template next<ConstructorArgument<T, i>>(schemaOf<T>.constructor[i])...};
    list.end(owner);
    return std::apply(make, std::move(arguments));
}

template <class T, class Make>
auto constructFrom(ListReader& list, Name owner, Make make) {
    return constructWith<T>(list, owner, make,
                            std::make_index_sequence<constructorArgumentCount<T>>());
}

// What is not reading, of one value without an index: write it, if it has a writer. Apart from
// reading, which is done at once.
template <class T, std::size_t index>
[[gnu::noinline]] void runPlainWriter(T& object, const AttributeOp& op) {
    using Traits = AttributeTraits<T, index>;
    constexpr const auto& attribute = attributeAt<T, index>;
    if constexpr (Traits::isWritable) {
        if (op.operation() == AttributeOp::set) {
            std::invoke(attribute.writer, object,
                        argumentFrom<typename Traits::Value>(op.velOpArg(), attribute.name));
            return;
        }
    }
    GenericIf::throwOpNotSupportedException(attribute.name, op.operation(), false);
}

template <class T, std::size_t index>
[[gnu::always_inline]] inline void runPlain(T& object, const AttributeOp& op, const GenericIf* key,
                                            const Ptr<GenericIf>& result) {
    using Value = typename AttributeTraits<T, index>::Value;
    constexpr const auto& attribute = attributeAt<T, index>;
    if (key != nullptr) GenericIf::throwBadIndexAttrException(attribute.name);
    if (op.operation() == AttributeOp::read) {
        if constexpr (kindAt<T, index> == AttributeKind::constant)
            answer(result, static_cast<Value>(attribute.access()));
        else
            answer(result,
                   static_cast<Value>(std::invoke(attribute.access, std::as_const(object))));
        return;
    }
    runPlainWriter<T, index>(object, op);
}

template <class T, std::size_t index, std::size_t... i>
void callFunction(T& object, const GenericIf* list, const Ptr<GenericIf>& result,
                  std::index_sequence<i...>) {
    using Function = AccessAt<T, index>;
    using Value = typename AttributeTraits<T, index>::Value;
    constexpr const auto& attribute = attributeAt<T, index>;
    std::optional<ListReader> reader;
    if (sizeof...(i) != 0 || list != nullptr) reader.emplace(list);
    // Braces: the arguments are read from the left.
    const std::tuple<ReflectedType<ArgumentOf<Function, i>>...> arguments{
        reader->template next<ReflectedType<ArgumentOf<Function, i>>>(attribute.arguments[i])...};
    if (reader) reader->end(attribute.name);
    const auto call = [&]() -> decltype(auto) {
        if constexpr (std::is_member_function_pointer_v<Function>)
            return std::invoke(attribute.access, object, std::get<i>(arguments)...);
        else
            return attribute.access(std::get<i>(arguments)...);
    };
    if constexpr (std::is_void_v<Value>)
        call();
    else
        answer(result, static_cast<Value>(call()));
}

// Reading calls a function that leaves its object as it is; writing, one that changes it. A
// procedure needs no list.
template <class T, std::size_t index>
void runFunction(T& object, const AttributeOp& op, const GenericIf* key,
                 const Ptr<GenericIf>& result) {
    using Function = AccessAt<T, index>;
    constexpr const auto& attribute = attributeAt<T, index>;
    if (key != nullptr) GenericIf::throwBadIndexAttrException(attribute.name);
    constexpr AttributeOp::Operation calls =
        Signature<Function>::changes ? AttributeOp::set : AttributeOp::read;
    if (op.operation() != calls)
        GenericIf::throwOpNotSupportedException(attribute.name, op.operation(), false);
    callFunction<T, index>(object, op.velOpArg(), result,
                           std::make_index_sequence<argumentCountOf<Function>>());
}

// Inserts what a list of arguments says: the member's constructor's, or key and value.
template <class T, std::size_t index>
void insertFromList(CollectionAccess<T, index>& members, const GenericIf* arguments) {
    using Traits = AttributeTraits<T, index>;
    using Value = typename Traits::Value;
    constexpr Name name = attributeAt<T, index>.name;
    ListReader list(arguments);
    if constexpr (isReference<Value>) {
        const auto key = list.next<typename Traits::Key>(Traits::keyName());
        list.end(name);
        members.insert(key);
    } else if constexpr (Traits::holdsKey) {
        if (list.peek() != nullptr && list.peek()->voidPtr(typeOf<Value>()) != nullptr) {
            const auto value = list.next<Value>(name);
            list.end(name);
            members.set(value);
        } else {
            members.set(constructFrom<Value>(
                list, name, [](const auto&... values) { return Value(values...); }));
        }
    } else {
        const auto key = list.next<typename Traits::Key>(Traits::keyName());
        const auto value = list.next<Value>("value");
        list.end(name);
        members.set(key, value);
    }
}

template <class T, std::size_t index>
void setMember(CollectionAccess<T, index>& members, const AttributeOp& op, const GenericIf* key) {
    using Traits = AttributeTraits<T, index>;
    constexpr Name name = attributeAt<T, index>.name;
    if (key == nullptr) {
        insertFromList<T, index>(members, op.velOpArg());
    } else if constexpr (Traits::holdsKey) {
        GenericIf::throwBadIndexAttrException(name);
    } else {
        const auto at = argumentFrom<typename Traits::Key>(key, Traits::keyName());
        members.set(at, argumentFrom<typename Traits::Value>(op.velOpArg(), name));
    }
}

// Answers what was under the key, if somebody wants to know. An adapter that cannot take the answer
// is refused before anything is removed.
template <class T, std::size_t index>
void delMember(CollectionAccess<T, index>& members,
               const typename AttributeTraits<T, index>::Key& key, const Ptr<GenericIf>& result) {
    if (!result) return members.del(key);
    answer(result, typename AttributeTraits<T, index>::Value());
    answer(result, members.take(key));
}

template <class T, std::size_t index>
void appendKeys(const CollectionAccess<T, index>& members, const Ptr<GenericIf>& result) {
    (void)GenericIf::List::of(result.ptr());
    auto& keys = static_cast<GenericIf::List&>(*result);
    for (auto at = members.begin(); !members.isAtEnd(at); members.advance(at))
        keys.push(adapterOf(members.keyAt(at), false));
}

template <class T, std::size_t index>
void runCollection(T& object, const AttributeOp& op, const GenericIf* key,
                   const Ptr<GenericIf>& result) {
    using Traits = AttributeTraits<T, index>;
    constexpr Name name = attributeAt<T, index>.name;
    CollectionAccess<T, index> members(object);
    const auto at = [key] { return argumentFrom<typename Traits::Key>(key, Traits::keyName()); };
    const auto whole = [key] {
        if (key != nullptr) GenericIf::throwBadIndexAttrException(attributeAt<T, index>.name);
    };
    switch (op.operation()) {
    case AttributeOp::read: return answer(result, members.value(at()));
    case AttributeOp::has: return answer(result, members.has(at()));
    case AttributeOp::count: return whole(), answer(result, members.count());
    case AttributeOp::keys: return whole(), appendKeys<T, index>(members, result);
    case AttributeOp::set: return setMember<T, index>(members, op, key);
    case AttributeOp::del: return delMember<T, index>(members, at(), result);
    case AttributeOp::delAll: return whole(), members.delAll();
    default: GenericIf::throwOpNotSupportedException(name, op.operation(), false);
    }
}

template <class T, std::size_t index>
void runAttribute(T& object, const AttributeOp& op, const GenericIf* key,
                  const Ptr<GenericIf>& result) {
    if constexpr (CollectionAttribute<T, index>)
        runCollection<T, index>(object, op, key, result);
    else if constexpr (kindAt<T, index> == AttributeKind::function)
        runFunction<T, index>(object, op, key, result);
    else
        runPlain<T, index>(object, op, key, result);
}

} // namespace Vel::detail
