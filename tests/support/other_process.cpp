#include "tests/support/other_process.h"

#include <sys/wait.h>
#include <unistd.h>

namespace KAV::Tests {

int InAnotherProcess(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int AsNobody(const std::function<int()>& work) {
    return InAnotherProcess([&] {
        constexpr uid_t nobody = 4242; // not in any user database
        if (getuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0)) return 99;
        return work();
    });
}

} // namespace KAV::Tests
