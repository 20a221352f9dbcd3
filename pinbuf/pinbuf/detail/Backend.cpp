#include <pinbuf/detail/Backend.h>

#include <cstdlib>
#include <memory>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/ShmBackend.h>

namespace pinbuf {

const Backend& chosenBackend() {
    const char* chosen = ::secure_getenv("PINBUF_BACKEND");
    const std::string_view name = chosen == nullptr ? "" : chosen;
    if (name.empty() || name == "shm") return ShmBackend::instance();
    throw Failure("PINBUF_BACKEND names no back end: " + inQuotes(name) + ", known is \"shm\"");
}

} // namespace pinbuf
