#include <Vel/ByteConnection.h>

namespace Vel {

ByteConnection::In::~In() = default;
ByteConnection::Out::~Out() = default;

} // namespace Vel
