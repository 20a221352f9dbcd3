#include "WriteJournal.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace PciAgent {

using Vel::U32;

namespace {

[[noreturn]] void fail(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), "cannot use the journal " + path);
}

// Stores stay on their side of this line.
void inOrder() { std::atomic_signal_fence(std::memory_order_seq_cst); }

} // namespace

WriteJournal::WriteJournal(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0 || ::ftruncate(file, sizeof(Contents)) != 0) fail(path);
    void* place = ::mmap(nullptr, sizeof(Contents), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (place == MAP_FAILED) fail(path);
    ::close(file);
    contents_ = static_cast<Contents*>(place);
}

WriteJournal::~WriteJournal() { ::munmap(contents_, sizeof(Contents)); }

void WriteJournal::begin(unsigned table, unsigned index, U32 value) noexcept {
    contents_->inFlight.table = table;
    contents_->inFlight.index = index;
    contents_->inFlight.value = value;
    inOrder();
    contents_->inFlight.active = 1;
    inOrder();
}

void WriteJournal::completed() noexcept {
    inOrder();
    settle(true, contents_->inFlight.value);
    const std::atomic_ref<U32> count(contents_->completedWrites);
    count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

void WriteJournal::settle(bool present, U32 found) noexcept {
    const InFlight& write = contents_->inFlight;
    if (present) {
        Register& target = contents_->registers[write.table][write.index];
        target.value = found;
        ++target.completed;
    }
    inOrder();
    contents_->inFlight.active = 0;
}

U32 WriteJournal::completedWrites() const noexcept {
    return std::atomic_ref<U32>(contents_->completedWrites).load(std::memory_order_relaxed);
}

unsigned WriteJournal::completedEntries() const noexcept {
    unsigned entries = 0;
    for (const auto& table : contents_->registers)
        for (const Register& written : table) entries += written.completed != 0;
    return entries;
}

void WriteJournal::verdictIs(const Verdict& verdict) noexcept {
    const std::atomic_ref<U32> process(contents_->verdict.process);
    Verdict others = verdict;
    others.process = process.load(std::memory_order_relaxed);
    contents_->verdict = others;
    process.store(verdict.process, std::memory_order_release);
}

bool WriteJournal::hasVerdictOf(U32 process) const noexcept {
    return std::atomic_ref<U32>(contents_->verdict.process).load(std::memory_order_acquire) ==
           process;
}

} // namespace PciAgent
