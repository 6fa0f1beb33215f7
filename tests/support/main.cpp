#include "tests/support/scratch_home.h"

#include <gtest/gtest.h>

#if defined(__SANITIZE_THREAD__)
#include <sys/mman.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <unistd.h>

/// Not a race of the product: the X server's library frees the name of its file when the process ends, while
/// an abandoned thread may still hold it, and a copied process ends together with its parent's threads.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "race:libXau.so\nthread:ErrorReport_IsSentByOneOfManyProcesses_Test\n";
}

/// ThreadSanitizer doesn't know that memory of the system's own kind is new, such as the pictures that the X
/// server shares: what a thread wrote at the same address before, on a stack that has gone, would be a race
/// with it. So the memory takes the place of a mapping, which the sanitizer knows to be new.
extern "C" __attribute__((visibility("default"))) void* shmat(int id, const void* at, int flags) noexcept {
    shmid_ds state{};
    void* place = MAP_FAILED;
    if (at == nullptr && shmctl(id, IPC_STAT, &state) == 0)
        place = mmap(nullptr, state.shm_segsz, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED) return reinterpret_cast<void*>(syscall(SYS_shmat, id, at, flags));
    return reinterpret_cast<void*>(syscall(SYS_shmat, id, place, flags | SHM_REMAP));
}
#endif

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const KAV::Tests::CScratchHome home;
    return RUN_ALL_TESTS();
}
