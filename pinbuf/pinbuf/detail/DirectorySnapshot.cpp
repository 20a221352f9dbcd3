#include <pinbuf/detail/DirectorySnapshot.h>

#include <pinbuf/detail/Turn.h>

namespace pinbuf {
namespace {

std::unique_ptr<DirectorySnapshot>& remembered() {
    static constinit TurnState<std::unique_ptr<DirectorySnapshot>> last;
    return last.get();
}

} // namespace

std::unique_ptr<DirectorySnapshot> DirectorySnapshot::recall(const FileIdentity& folder) {
    std::unique_ptr<DirectorySnapshot>& last = remembered();
    if (last == nullptr || last->folder != folder) return nullptr;
    if (!last->file.lookAgain()) last.reset();
    return std::move(last);
}

// Looks at the other one first: it must not close what is somebody else's by now.
void DirectorySnapshot::remember(std::unique_ptr<DirectorySnapshot> snapshot) {
    std::unique_ptr<DirectorySnapshot>& last = remembered();
    if (last != nullptr) last->file.lookAgain();
    last = std::move(snapshot);
}

} // namespace pinbuf
