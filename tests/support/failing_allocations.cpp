#include "tests/support/failing_allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

// A sanitizer replaces the C library's functions itself.
#if defined(__linux__) && !defined(KAV_SANITIZED)
#define KAV_INTERPOSE 1
#include <cerrno>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>
#else
#define KAV_INTERPOSE 0
#endif

namespace {

thread_local std::size_t untilFailure = 0; // 0: none fails

bool Fails() noexcept {
    return untilFailure != 0 && --untilFailure == 0;
}

std::atomic<std::ptrdiff_t> untilShared = -1; // calls that succeed before one fails; below 0: none fails
thread_local bool standsAside = false;

bool FailsForAll() noexcept {
    return !standsAside && untilShared.load(std::memory_order_relaxed) >= 0 && untilShared-- == 0;
}

} // namespace

namespace KAV::Tests {

CFailingAllocation::CFailingAllocation(std::size_t nth) noexcept {
    untilFailure = nth;
}

CFailingAllocation::~CFailingAllocation() {
    untilFailure = 0;
}

bool CFailingAllocation::ReachesAll() noexcept {
    return KAV_INTERPOSE != 0;
}

CFailingNew::CFailingNew(std::size_t nth) noexcept {
    untilShared = static_cast<std::ptrdiff_t>(nth) - 1;
}

CFailingNew::~CFailingNew() {
    untilShared = -1;
}

bool CFailingNew::HasFailed() noexcept {
    return untilShared < 0;
}

void CFailingNew::StandAside(bool aside) noexcept {
    standsAside = aside;
}

} // namespace KAV::Tests

#if KAV_INTERPOSE

// The C library's internal functions do the work; the public ones, replaced here, fail.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
    return Fails() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : __libc_calloc(count, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}
void* mmap(void* address, std::size_t length, int protection, int flags, int file, off_t offset) {
    if (Fails()) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return reinterpret_cast<void*>(syscall(SYS_mmap, address, length, protection, flags, file, offset));
}
}

#endif

/// Its call of malloc() is the one that counts for CFailingAllocation, where that reaches all kinds.
void* operator new(std::size_t size) {
    if (!FailsForAll() && (KAV_INTERPOSE != 0 || !Fails())) {
        if (void* memory = std::malloc(size)) return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
