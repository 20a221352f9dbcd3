#include <Vel/TypeDescription.h>

#include <Vel/IntrospectionReactor.h>
#include <Vel/Ptr.h>
#include <Vel/VelType.h>

namespace Vel {

namespace {

VelType* typeOrNull(TypeGetter getter) { return getter != nullptr ? getter() : nullptr; }

// A function, or a collection whose members hold their key.
void registerWithContext(IntrospectionReactor& reactor, VelType& type,
                         const AttributeDescription& attribute) {
    VelType* const valueType = typeOrNull(attribute.type);
    VelAttr* const keyAttr =
        attribute.keyAttribute.empty() ? nullptr : valueType->attr(attribute.keyAttribute);
    VelAttr* const valueAttr = keyAttr != nullptr ? valueType->valueAttr() : nullptr;
    type.attrDel(attribute.name);
    VelAttr* const attr =
        type.attrIs(attribute.name, valueType, keyAttr, valueAttr, attribute.flags, attribute.id);
    attr->introspectionIs(attribute.introspection);
    attr->keyTypeIs(typeOrNull(attribute.keyType));
    for (const ArgumentDescription& argument : attribute.arguments) {
        attr->argNameQEnq(argument.name);
        attr->argTypeQEnq(argument.type()->qualifiedName());
    }
    reactor.handleAttr(attr);
    reactor.handleAttrContextExit();
}

void registerAttribute(IntrospectionReactor& reactor, VelType& type,
                       const AttributeDescription& attribute) {
    if (attribute.hasContext()) {
        registerWithContext(reactor, type, attribute);
        return;
    }
    VelAttr* const attr =
        reactor.defNoninstantiatingAttr(&type, attribute.name, typeOrNull(attribute.type), &type,
                                        attribute.flags, attribute.introspection, attribute.id);
    if (attr != nullptr) attr->keyTypeIs(typeOrNull(attribute.keyType));
}

// Keeps a type's scope open, also when what stands in it throws.
class OpenType {
public:
    OpenType(IntrospectionReactor& reactor, const VelType& type) : reactor_(reactor) {
        reactor_.handleType(&type, nullptr);
    }

    OpenType(const OpenType&) = delete;
    OpenType& operator=(const OpenType&) = delete;

    ~OpenType() noexcept(false) { reactor_.handleScopeExit(); }

private:
    IntrospectionReactor& reactor_;
};

} // namespace

void registerType(IntrospectionReactor& reactor, const TypeDescription& description) {
    VelType& type = *description.type();
    VelType::typeNodeIs(&type, description.qualifiedName);
    const OpenType scope(reactor, type);
    type.sizeIs(description.size);
    type.isValueIs(description.isValue);
    type.isEnumTypeIs(description.isEnumType);
    type.hasGenericIfSupportIs(true);
    type.constructorArgDelAll();
    for (const ArgumentDescription& argument : description.constructor) {
        type.constructorArgNameQEnq(argument.name);
        type.constructorArgTypeQEnq(argument.type()->qualifiedName());
    }
    for (const AttributeDescription& attribute : description.attributes)
        registerAttribute(reactor, type, attribute);
    if (description.hasValueAttribute) type.valueAttrNameIs("value");
}

} // namespace Vel
