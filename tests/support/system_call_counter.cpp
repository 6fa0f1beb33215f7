#include "tests/support/system_call_counter.h"

#include <cstdlib>
#include <new>

// A sanitizer replaces the C library's functions itself.
#if defined(__linux__) && !defined(KAV_SANITIZED)
#define KAV_INTERPOSE 1
#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#else
#define KAV_INTERPOSE 0
#endif

namespace {

thread_local bool counting = false;
thread_local std::size_t allocations = 0;
thread_local std::size_t locks = 0;

void CountAllocation() noexcept {
    if (counting) ++allocations;
}

[[maybe_unused]] void CountLock() noexcept {
    if (counting) ++locks;
}

} // namespace

namespace KAV::Tests {

CSystemCallCounter::CSystemCallCounter() noexcept {
    allocations = 0;
    locks = 0;
    counting = true;
}

CSystemCallCounter::~CSystemCallCounter() {
    counting = false;
}

std::size_t CSystemCallCounter::Allocations() const noexcept {
    return allocations;
}

std::size_t CSystemCallCounter::Locks() const noexcept {
    return locks;
}

bool CSystemCallCounter::SeesLocks() noexcept {
    return KAV_INTERPOSE != 0;
}

} // namespace KAV::Tests

#if KAV_INTERPOSE

// The C library's internal functions do the work; the public ones, replaced here, count.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);

void* malloc(std::size_t size) {
    CountAllocation();
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    CountAllocation();
    return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    CountAllocation();
    return __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    CountAllocation();
    return __libc_memalign(alignment, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
    CountAllocation();
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    CountAllocation();
    *memory = __libc_memalign(alignment, size);
    return *memory == nullptr ? 12 : 0; // ENOMEM
}
void free(void* memory) {
    CountAllocation();
    __libc_free(memory);
}
}

namespace {

template<typename TFunction>
TFunction Next(const char* name) noexcept {
    return reinterpret_cast<TFunction>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define KAV_COUNTED_LOCK(name, type)                                                                         \
    extern "C" int name(type* object) {                                                                      \
        CountLock();                                                                                         \
        static const auto next = Next<int (*)(type*)>(#name);                                                \
        return next(object);                                                                                 \
    }

KAV_COUNTED_LOCK(pthread_mutex_lock, pthread_mutex_t)
KAV_COUNTED_LOCK(pthread_mutex_trylock, pthread_mutex_t)
KAV_COUNTED_LOCK(pthread_rwlock_rdlock, pthread_rwlock_t)
KAV_COUNTED_LOCK(pthread_rwlock_wrlock, pthread_rwlock_t)
KAV_COUNTED_LOCK(pthread_cond_signal, pthread_cond_t)
KAV_COUNTED_LOCK(sem_wait, sem_t)
KAV_COUNTED_LOCK(sem_post, sem_t)

#else

void* operator new(std::size_t size) {
    CountAllocation();
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    CountAllocation();
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    CountAllocation();
    std::free(memory);
}

#endif
