// Loading private copies of the kd-tree library and building and releasing trees
// through them. Copy 0 is the library linked normally; copy c >= 1 is the same file
// loaded into a link-map namespace of its own, so its globals are its own too.
#include <zol/runtime/AnnLibraryCopiesInternal.h>

#include <ANN/ANN.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <thread>

#include <zol/runtime/LogInternal.h>

// Loading a library a second time with globals of its own takes glibc's dlmopen.
#if defined(__linux__) && defined(__GLIBC__)
#define ZOL_ANN_COPIES 1
#include <dlfcn.h>
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZOL_ANN_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define ZOL_ANN_SANITIZED 1
#endif
#endif

namespace ZOL {

namespace {

// Points per leaf. On scanned surfaces of 30k to 1M points, 24 builds a tree 15-40 %
// faster than 16 (fewer levels to split) while a 10-nearest search costs the same; from
// 32 on the leaves get long enough that searches of large clouds slow down.
constexpr int kBucketSize = 24;

/// The tree constructor ANNkd_tree(ANNpointArray, int n, int dim, int bucketSize,
/// ANNsplitRule) as the loader hands it out: the object to construct comes first.
using TreeConstructor = void (*)(void*, ANNpointArray, int, int, int, ANNsplitRule);

struct LibraryCopy {
    std::mutex lock;
    /// Null for copy 0, whose trees are built by an ordinary constructor call.
    TreeConstructor construct = nullptr;
};

struct Registry {
    std::mutex loadLock;
    std::array<LibraryCopy, kMaxAnnLibraryCopies> copies;
    std::atomic<int> loaded{1};
    std::atomic<int> limit{0};
    std::atomic<bool> decided{false};
    /// Copies this process may use: 1 when private copies are unavailable, lowered
    /// when the loader refuses one (it would refuse the next for the same reason).
    std::atomic<int> cap{1};
    std::string libraryPath;
};

/// Never destroyed: indexes held in static objects may release their trees at exit.
Registry& TheRegistry() {
    static Registry* registry = new Registry;
    return *registry;
}

#if defined(ZOL_ANN_COPIES)
constexpr const char* kTreeConstructorSymbol = "_ZN10ANNkd_treeC1EPPdiii12ANNsplitRule";

/// True when the tree built through \p construct answers a known query correctly.
bool CopyWorks(TreeConstructor construct) {
    double coords[] = {0, 0, 0, 1, 0, 0, 3, 0, 0};
    double* rows[] = {coords, coords + 3, coords + 6};
    double query[] = {2.9, 0, 0};
    void* storage = ::operator new(sizeof(ANNkd_tree), std::nothrow);
    if (!storage) return false;
    bool works = false;
    try {
        construct(storage, rows, 3, 3, kBucketSize, ANN_KD_SUGGEST);
        ANNkd_tree* tree = static_cast<ANNkd_tree*>(storage);
        int id = -1;
        double dist = -1.0;
        tree->annkSearch(query, 1, &id, &dist, 0.0);
        works = id == 2 && std::abs(dist - 0.01) < 1e-12;
        tree->~ANNkd_tree();
    } catch (...) {
        works = false;
    }
    ::operator delete(storage);
    return works;
}

/// Why private copies cannot be used here, or null when they can (then \p path is the
/// file of the normally linked library).
const char* SharedReason(std::string* path) {
#if defined(ZOL_ANN_SANITIZED)
    // Its allocator interception does not reach a second C runtime.
    (void)path;
    return "built with a sanitizer";
#else
    const char* shared = std::getenv("ZOL_ANN_SHARED");
    if (shared && *shared && std::strcmp(shared, "0") != 0) return "ZOL_ANN_SHARED is set";
    for (const char* runtime : {"__asan_init", "__tsan_init", "__msan_init"}) {
        if (dlsym(RTLD_DEFAULT, runtime)) return "a sanitizer runtime is loaded";
    }
    Dl_info info;
    if (!dladdr(reinterpret_cast<void*>(&annAllocPts), &info) || !info.dli_fname ||
        !std::strstr(info.dli_fname, "libann")) {
        return "the kd-tree library is not a shared object";
    }
    *path = info.dli_fname;
    return nullptr;
#endif
}

bool LoadCopy(Registry& registry, int copy) {
    void* handle = dlmopen(LM_ID_NEWLM, registry.libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        LogAt(LOG_TRACE, "Ann: loading copy ", copy, " of the kd-tree library failed: ", dlerror());
        return false;
    }
    auto construct = reinterpret_cast<TreeConstructor>(dlsym(handle, kTreeConstructorSymbol));
    if (!construct || !CopyWorks(construct)) {
        LogAt(LOG_TRACE, "Ann: copy ", copy, " of the kd-tree library does not work");
        dlclose(handle);
        return false;
    }
    registry.copies[copy].construct = construct;
    return true;
}
#else
const char* SharedReason(std::string*) { return "private library copies need glibc"; }

bool LoadCopy(Registry&, int) { return false; }
#endif

/// Decides once per process whether private copies are used, and logs the decision.
void Decide(Registry& registry) {
    const char* reason = SharedReason(&registry.libraryPath);
    const unsigned processors = std::thread::hardware_concurrency();
    if (!reason && processors < 2) reason = "one processor";
    if (reason) {
        LogAt(LOG_TRACE, "Ann: one shared copy of the kd-tree library (", reason, ")");
    } else {
        const int cap = std::min(kMaxAnnLibraryCopies, static_cast<int>(processors));
        registry.cap.store(cap, std::memory_order_relaxed);
        LogAt(LOG_TRACE, "Ann: up to ", cap, " private copies of the kd-tree library");
    }
    registry.decided.store(true, std::memory_order_release);
}

}  // namespace

int AcquireAnnLibraryCopies(int wanted) {
    Registry& registry = TheRegistry();
    const int limit = registry.limit.load(std::memory_order_relaxed);
    wanted = std::max(1, limit > 0 ? std::min(wanted, limit) : wanted);
    int count = registry.loaded.load(std::memory_order_acquire);
    if (registry.decided.load(std::memory_order_acquire) &&
        (count >= wanted || count >= registry.cap.load(std::memory_order_relaxed))) {
        return std::min(wanted, count);
    }
    std::lock_guard<std::mutex> guard(registry.loadLock);
    if (!registry.decided.load(std::memory_order_relaxed)) Decide(registry);
    count = registry.loaded.load(std::memory_order_relaxed);
    const int target = std::min(wanted, registry.cap.load(std::memory_order_relaxed));
    while (count < target && LoadCopy(registry, count)) {
        registry.loaded.store(++count, std::memory_order_release);
    }
    if (count < target) registry.cap.store(count, std::memory_order_relaxed);
    return std::min(wanted, count);
}

std::mutex& AnnLibraryCopyLock(int copy) { return TheRegistry().copies[copy].lock; }

ANNkd_tree* BuildAnnTreeInCopy(int copy, double** rows, int count, int dim) {
    LibraryCopy& library = TheRegistry().copies[copy];
    void* storage = ::operator new(sizeof(ANNkd_tree), std::nothrow);
    if (!storage) return nullptr;
    std::lock_guard<std::mutex> guard(library.lock);
    try {
        if (library.construct) {
            library.construct(storage, rows, count, dim, kBucketSize, ANN_KD_SUGGEST);
        } else {
            new (storage) ANNkd_tree(rows, count, dim, kBucketSize, ANN_KD_SUGGEST);
        }
    } catch (...) {
        ::operator delete(storage);
        return nullptr;
    }
    return static_cast<ANNkd_tree*>(storage);
}

void ReleaseAnnTreeInCopy(int copy, ANNkd_tree* tree) {
    if (!tree) return;
    {
        std::lock_guard<std::mutex> guard(AnnLibraryCopyLock(copy));
        // The destructor is virtual, so this runs the code of the copy that built the
        // tree, which frees the nodes with that copy's allocator.
        tree->~ANNkd_tree();
    }
    ::operator delete(tree);
}

void SetAnnLibraryCopyLimit(int limit) {
    TheRegistry().limit.store(std::max(limit, 0), std::memory_order_relaxed);
}

}  // namespace ZOL
