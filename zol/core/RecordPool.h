// Chunked storage for the small records of the mesh containers. Records are handed out
// from contiguous chunks so that walking a mesh in index order stays cache-friendly,
// while the containers keep their arrays of record pointers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZOL {

/// Allocator of records of type \p T in chunks that double from \p FirstChunk up to
/// \p MaxChunk records, so a small mesh stays small and a large one needs few chunks;
/// Reserve() makes one chunk of a known size. Freed records are reused (last freed,
/// first reused); Release() drops every chunk at once. Not thread-safe.
template <typename T, int FirstChunk = 16, int MaxChunk = 4096>
class RecordPool {
    static_assert(std::is_trivially_destructible_v<T>, "chunks are freed without destructors");

public:
    RecordPool() = default;
    RecordPool(const RecordPool&) = delete;
    RecordPool& operator=(const RecordPool&) = delete;
    RecordPool(RecordPool&& other) noexcept { Take(other); }
    RecordPool& operator=(RecordPool&& other) noexcept {
        if (this != &other) Take(other);
        return *this;
    }

    /// \return a record, value-initialised on first use of its slot; reused slots keep
    /// whatever the caller wrote last, so callers assign every field.
    T* Allocate() {
        if (!mFree.empty()) {
            T* record = mFree.back();
            mFree.pop_back();
            return record;
        }
        if (mUsedInLast == mLastSize) {
            NewChunk(mChunks.empty() ? FirstChunk : std::min(2 * mLastSize, MaxChunk),
                     [](void*, std::size_t) {});
        }
        // Constructed on hand-out, not with the chunk: a reserved chunk is then written
        // once, in order, and its untouched tail costs no memory.
        T* slot = mChunks.back().get() + mUsedInLast++;
        return ::new (static_cast<void*>(slot)) T();
    }
    /// Makes room for \p count more records in one chunk (beyond the free ones and the
    /// rest of the last chunk). \p prepare(memory, bytes) sees the chunk's memory before
    /// any record in it is written, e.g. to give the kernel advice about it.
    template <typename Prepare>
    void Reserve(int count, Prepare prepare) {
        const int spare = static_cast<int>(mFree.size()) + (mLastSize - mUsedInLast);
        if (count > spare) NewChunk(count - spare, prepare);
    }
    /// Gives \p record back for reuse; it must come from this pool.
    void Free(T* record) { mFree.push_back(record); }
    /// Drops every chunk; all records handed out become invalid.
    void Release() {
        mChunks.clear();
        mFree.clear();
        mFree.shrink_to_fit();
        mUsedInLast = mLastSize = 0;
    }

private:
    struct ChunkDelete {
        void operator()(T* records) const { ::operator delete[](records); }
    };

    // Appends a chunk of room for \p size records and makes it the last one.
    template <typename Prepare>
    void NewChunk(int size, Prepare prepare) {
        const std::size_t bytes = sizeof(T) * static_cast<std::size_t>(size);
        std::unique_ptr<T[], ChunkDelete> chunk(static_cast<T*>(::operator new[](bytes)));
        prepare(static_cast<void*>(chunk.get()), bytes);
        mChunks.push_back(std::move(chunk));
        mLastSize = size;
        mUsedInLast = 0;
    }

    void Take(RecordPool& other) {
        mChunks = std::move(other.mChunks);
        mFree = std::move(other.mFree);
        mUsedInLast = other.mUsedInLast;
        mLastSize = other.mLastSize;
        other.mChunks.clear();
        other.mFree.clear();
        other.mUsedInLast = other.mLastSize = 0;
    }

    std::vector<std::unique_ptr<T[], ChunkDelete>> mChunks;
    std::vector<T*> mFree;
    int mUsedInLast = 0;  // records handed out from the last chunk
    int mLastSize = 0;    // size of the last chunk (0: no chunk yet)
};

}  // namespace ZOL
