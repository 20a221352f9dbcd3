// SchemaTable.h - every type as it has to be registered, written by hand: what the registry is compared with, both ways.
#pragma once

#include <string_view>
#include <vector>

namespace Brixo::testing {

struct ArgumentRow {
    std::string_view name;
    std::string_view type;
};

struct AttributeRow {
    std::string_view name;
    unsigned id;
    std::string_view type; // empty for a procedure or a function without a result
    unsigned introspection = 0;
    std::vector<ArgumentRow> arguments = {};
    std::string_view keyType = {};
    std::string_view keyAttribute = {};
};

struct TypeRow {
    std::string_view name;
    std::string_view base;

    enum Kind { value, enumeration, entity } kind;

    std::vector<ArgumentRow> constructor;
    std::vector<AttributeRow> attributes;
};

// In the order of registration, module by module.
const std::vector<TypeRow>& schemaTable();

} // namespace Brixo::testing
