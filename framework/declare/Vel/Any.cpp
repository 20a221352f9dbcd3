#include <Vel/Any.h>

#include <Vel/Assert.h>
#include <Vel/Builtin.h>
#include <Vel/GenericIfList.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/ReflectionException.h>
#include <Vel/format.h>
#include <Vel/nearestNames.h>
#include <Vel/shownName.h>
#include <vector>

namespace Vel {

namespace {

[[noreturn]] void refuse(const String8& text, Exception::Id id) {
    throw ReflectionException(text, id);
}

String8 withNearest(const String8& text, Name written, const std::vector<Name>& known) {
    const String8 nearest = nearestNames(written, known);
    return nearest.empty() ? text : text + "; nearest: " + nearest;
}

// The arguments of a constructor or function, each as an adapter of its type.
class ArgumentList {
public:
    ArgumentList(String8 owner, const Arguments& arguments)
        : owner_(owner), arguments_(arguments), values_(arguments.size()) {}

    void set(Name name, const Any::Operand& value) {
        for (std::size_t i = 0; i < arguments_.size(); ++i)
            if (arguments_.name(i) == name) return set(i, value);
        std::vector<Name> known;
        for (std::size_t i = 0; i < arguments_.size(); ++i) known.push_back(arguments_.name(i));
        refuse(withNearest(owner_ + " has no argument " + shownName(name), name, known),
               Exception::Id::type);
    }

    void set(std::size_t index, const Any::Operand& value) {
        if (index >= arguments_.size())
            refuse(owner_ + format(" takes %zu arguments", arguments_.size()), Exception::Id::type);
        values_[index] = value.as(Any::type(arguments_.typeName(index)));
    }

    Ptr<GenericIf::List> list() const {
        Ptr<GenericIf::List> result = new GenericIf::List;
        for (std::size_t i = 0; i < values_.size(); ++i) {
            if (!values_[i])
                refuse(owner_ + " lacks its argument " + String8(arguments_.name(i)),
                       Exception::Id::type);
            result->push(values_[i]);
        }
        return result;
    }

private:
    String8 owner_;
    const Arguments& arguments_;
    std::vector<Ptr<GenericIf>> values_;
};

Ptr<GenericIf::List> positionalList(const String8& owner, const Arguments& arguments,
                                    std::initializer_list<Any::Operand> values) {
    ArgumentList list(owner, arguments);
    std::size_t index = 0;
    for (const Any::Operand& value : values) list.set(index++, value);
    return list.list();
}

} // namespace

Any::Any(const Ptr<GenericIf>& adapter) : adapter_(adapter) { VEL_ASSERT(adapter != nullptr); }

VelType& Any::type(Name qualifiedName) {
    if (VelType* const type = VelType::typeNode(qualifiedName)) return *type;
    std::vector<Name> known;
    for (const VelType* const type : IntrospectionReactor::global()->types())
        known.push_back(type->qualifiedName());
    refuse(withNearest("there is no type " + shownName(qualifiedName), qualifiedName, known),
           Exception::Id::type);
}

Any Any::parse(Name typeName, const String8& text) { return Any(Operand(text).as(type(typeName))); }

Any Any::make(Name typeName, std::initializer_list<Argument> arguments) {
    const VelType& made = type(typeName);
    ArgumentList list(String8(made.qualifiedName()), made.constructorArguments());
    for (const Argument& argument : arguments) list.set(argument.name, argument.value);
    return Any(made.genericIfListConstructor(list.list().ptr()));
}

bool Any::isNull() const {
    const VelType* const object = PtrInterface::_fwkType();
    return type().isKindOf(object) && adapter_->voidPtr(object) == nullptr;
}

bool Any::operator==(const Any& other) const {
    if (&type() != &other.type()) return false;
    const Ptr<GenericIf> result = Builtin<bool>::genericIf(false);
    const GenericIf& constant = *adapter_;
    constant.attributeOp({0, AttributeOp::compare, other.adapter_.ptr()}, nullptr, result);
    return Any(result).as<bool>();
}

const VelAttr& Any::attributeNamed(Name name) const {
    if (const VelAttr* const attr = type().attr(name)) return *attr;
    std::vector<Name> known;
    forEachAttribute([&known](const VelAttr& attr) { known.push_back(attr.name()); });
    refuse(withNearest(String8(type().qualifiedName()) + " has no attribute " + shownName(name),
                       name, known),
           Exception::Id::attribute);
}

Any Any::ask(const VelAttr& attribute, AttributeOp::Operation operation, VelType* resultType,
             const Ptr<const GenericIf>& index) const {
    if (resultType == nullptr)
        refuse("attribute " + String8(attribute.name()) + " has no value",
               Exception::Id::operation);
    const Ptr<GenericIf> result = resultType->newGenericIf();
    adapter_->attributeOp({attribute.id(), operation}, index, result);
    return Any(result);
}

namespace {

VelType& keyTypeOf(const VelAttr& attribute) {
    if (attribute.keyType() == nullptr) GenericIf::throwBadIndexAttrException(attribute.name());
    return *attribute.keyType();
}

VelType& valueTypeOf(const VelAttr& attribute) {
    if (attribute.type() == nullptr)
        GenericIf::throwOpNotSupportedException(attribute.name(), AttributeOp::set, false);
    return *attribute.type();
}

} // namespace

Any Any::get(Name attribute) const {
    const VelAttr& attr = attributeNamed(attribute);
    return ask(attr, AttributeOp::read, attr.type(), nullptr);
}

Any Any::get(Name attribute, const Operand& key) const {
    const VelAttr& attr = attributeNamed(attribute);
    return ask(attr, AttributeOp::read, attr.type(), key.as(keyTypeOf(attr)));
}

bool Any::has(Name attribute, const Operand& key) const {
    const VelAttr& attr = attributeNamed(attribute);
    return ask(attr, AttributeOp::has, Builtin<bool>::_fwkType(), key.as(keyTypeOf(attr)))
        .as<bool>();
}

U32 Any::count(Name attribute) const {
    return ask(attributeNamed(attribute), AttributeOp::count, Builtin<U32>::_fwkType(), nullptr)
        .as<U32>();
}

void Any::set(Name attribute, const Operand& value) {
    const VelAttr& attr = attributeNamed(attribute);
    const Ptr<GenericIf> written = value.as(valueTypeOf(attr));
    adapter_->attributeOp({attr.id(), AttributeOp::set, written.ptr()}, nullptr, nullptr);
}

void Any::set(Name attribute, const Operand& key, const Operand& value) {
    const VelAttr& attr = attributeNamed(attribute);
    const Ptr<GenericIf> at = key.as(keyTypeOf(attr));
    const Ptr<GenericIf> written = value.as(valueTypeOf(attr));
    adapter_->attributeOp({attr.id(), AttributeOp::set, written.ptr()}, at, nullptr);
}

Any Any::del(Name attribute, const Operand& key) {
    const VelAttr& attr = attributeNamed(attribute);
    return ask(attr, AttributeOp::del, attr.type(), key.as(keyTypeOf(attr)));
}

void Any::delAll(Name attribute) {
    adapter_->attributeOp({attributeNamed(attribute).id(), AttributeOp::delAll}, nullptr, nullptr);
}

void Any::insert(Name attribute, std::initializer_list<Operand> arguments) {
    const VelAttr& attr = attributeNamed(attribute);
    Ptr<GenericIf::List> list = new GenericIf::List;
    const bool isMember = arguments.size() == 1 && arguments.begin()->adapter() &&
                          arguments.begin()->adapter()->type()->isKindOf(attr.type());
    if (isMember) {
        list->push(arguments.begin()->adapter());
    } else if (!attr.arguments().empty()) {
        list = positionalList(String8(attr.name()), attr.arguments(), arguments);
    } else if (attr.keyAttr() != nullptr) {
        list = positionalList(String8(attr.name()), attr.type()->constructorArguments(), arguments);
    } else {
        Arguments entry;
        for (const Name argument : {Name("key"), Name("value")}) entry.nameEnq(argument);
        entry.typeNameEnq(keyTypeOf(attr).qualifiedName());
        entry.typeNameEnq(valueTypeOf(attr).qualifiedName());
        list = positionalList(String8(attr.name()), entry, arguments);
    }
    adapter_->attributeOp({attr.id(), AttributeOp::set, list.ptr()}, nullptr, nullptr);
}

std::optional<Any> Any::call(Name attribute, std::initializer_list<Operand> arguments) {
    const VelAttr& attr = attributeNamed(attribute);
    const Ptr<GenericIf::List> list =
        positionalList(String8(attr.name()), attr.arguments(), arguments);
    const bool changes = attr.flags().has(VelAttr::AttrFlags::changing);
    const Ptr<GenericIf> result = attr.type() != nullptr ? attr.type()->newGenericIf() : nullptr;
    adapter_->attributeOp({attr.id(), changes ? AttributeOp::set : AttributeOp::read, list.ptr()},
                          nullptr, result);
    return result ? std::optional<Any>(result) : std::nullopt;
}

void Any::forEachAttribute(const std::function<void(const VelAttr&)>& visit) const {
    std::vector<const VelType*> chain; // from the last base down
    for (const VelType* at = &type(); at != nullptr; at = at->inheritsFrom())
        chain.insert(chain.begin(), at);
    for (const VelType* const at : chain)
        for (const VelAttr* const attr : at->attrs()) visit(*attr);
}

void Any::forEachMember(Name attribute,
                        const std::function<void(const Any& key, const Any& value)>& visit) const {
    GenericIf& adapter = *adapter_;
    const Ptr<AttributeIterator> at = adapter.attributeIterator(attributeNamed(attribute).id());
    while (adapter.attributeIterator_nonNull(at)) {
        const Any key(adapter.attributeIterator_iterKey(at));
        const Any value(adapter.attributeIterator_iterObj(at));
        visit(key, value);
        adapter.attributeIterator_iterInc(at); // from the key on, whatever the visitor did
    }
}

Any::Operand::Operand(BytePtr bytes) : adapter_(Builtin<BytePtr>::genericIf(bytes)) {}

Ptr<GenericIf> Any::Operand::as(VelType& type) const {
    if (adapter_ && adapter_->type()->isKindOf(&type)) return adapter_;
    const String8 text = adapter_ ? adapter_->strRep() : text_;
    const bool isBareName =
        type.isEnumType() && !text.empty() && text.view()[0] != '\'' && text.view()[0] != '"';
    return type.genericIfOfForeignText(isBareName ? "'" + text + "'" : text, false);
}

String8 Any::Operand::numberText(S64 number) { return format("%lld", number); }

String8 Any::Operand::numberText(U64 number) { return format("%llu", number); }

} // namespace Vel
