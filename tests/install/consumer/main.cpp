// A client of libBrixoTypes: a value printed and read back, and a table that its next incarnation
// finds again.
#include <Brixo/Brixo.h>
#include <Orn/Orn.h>
#include <Vel/Vel.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

constexpr unsigned slotCount = 8;
constexpr unsigned entryBytes = 4;

bool printsItsTextForm() {
    std::ostringstream out;
    out << Brixo::LogicalResourceId(Brixo::ResourceType::tableResource, 7);
    return out.str() == "Value('Brixo::LogicalResourceId', ** {'type': 'tableResource', 'id': 7})";
}

Vel::Ptr<Brixo::CacheTable> openTable() {
    const Brixo::PhysicalResourceId resource(Brixo::ResourceType::tableResource, 3);
    return Brixo::cacheTableFactory(Brixo::AgentId(1),
                                    Brixo::CacheTableIndex(Brixo::DeviceId(2), resource), slotCount,
                                    entryBytes);
}

bool entrySurvivesTheTable() {
    unsigned char written[entryBytes] = {1, 2, 3, 4};
    const Brixo::DeviceOffset key(0x40);
    openTable()->entryIs(key, written);
    const auto table = openTable();
    const unsigned char* found = table->entry(key);
    return found != nullptr && std::memcmp(found, written, entryBytes) == 0 &&
           table->keyToIndexs() == 1;
}

} // namespace

int main() {
    char folder[] = "/tmp/brixo-consumer-XXXXXX";
    if (mkdtemp(folder) == nullptr) return 1;
    setenv("PINBUF_DIR", folder, 1);
    const bool right = printsItsTextForm() && entrySurvivesTheTable();
    return std::system((std::string("rm -r ") + folder).c_str()) == 0 && right ? 0 : 1;
}
