// TraceFile.h - opens, checks, creates and maps the trace file.
#pragma once

#include <Ferrolog/detail/Layout.h>

namespace Ferrolog::detail {

// Owns:      nothing after open(): the addresses stay until unmap(), file and descriptor until
//            close(). A copy is the same file.
// Invariant: `base` is null or maps `layout.fileBytes` bytes, of a valid file until close().
class TraceFile {
public:
    // Opens or creates the file as ferrolog_open says: 0, or an errno value after a complaint. On
    // success the file is locked for this process, all lanes and chunks are free, and nobody else
    // writes into it.
    int open(const char* path, U32 ringBytes);

    // Takes the file away from whoever still writes by way of the mapping, in the middle of a
    // message perhaps, and gives the lock back. The addresses stay valid: zeros of this process are
    // there now, and nobody reads what is written into them. (Without memory for them the file
    // stays.)
    void close();

    // Precondition: nobody looks at the addresses any more.
    void unmap();

    const Layout& layout() const { return layout_; }

    FileHeader& header() const { return at<FileHeader>(0); }

    LifeRecord& life(U32 number) const { return at<LifeRecord>(layout_.lifeAt(number)); }

    SiteRecord& site(U32 id) const { return at<SiteRecord>(layout_.siteAt(id)); }

    char* text() const { return &at<char>(layout_.textAt); }

    // The counters of one lane, indexed by site id.
    U64* counters(U32 lane) const { return &at<U64>(layout_.counterAt(lane, 0)); }

    ChunkHeader& chunk(U32 slot) const { return at<ChunkHeader>(layout_.chunkAt(slot)); }

private:
    enum class Outcome { ready, again, failed };

    Outcome tryOpen(const char* path, U32 ringBytes, int& error);
    bool isAcceptable(const char* path, int& error);
    bool isStillAt(const char* path) const;
    bool isSameFile(int descriptor) const;
    Outcome create(const char* path, U32 ringBytes, int& error);
    void discard(const char* path) const;
    Outcome adopt(const char* path, U32 ringBytes, const FileHeader& before, U64 fileBytes,
                  int& error);
    Outcome moveAside(const char* path, int& error);
    bool map(const char* path, int& error);
    void putZerosInItsPlace() const;
    void freeAllLanesAndChunks() const;
    void countWhatIsInUse() const;

    template <class T>
    T& at(U32 offsetBytes) const {
        return *reinterpret_cast<T*>(base_ + offsetBytes);
    }

    int descriptor_ = -1;
    char* base_ = nullptr;
    Layout layout_{};
};

} // namespace Ferrolog::detail
