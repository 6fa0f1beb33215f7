#include "platform/xdg/detached_program.h"

#include "platform/quiet_signals.h"

#include <future>
#include <thread>
#include <utility>

namespace KAV::Platform {

bool StartDetached(const std::string& program, std::vector<std::string> arguments, CEnvironment environment) {
    std::promise<bool> promise;
    auto started = promise.get_future();
    const CQuietSignals quiet;
    // The thread stays until the program ends: a program whose parent doesn't wait for it would remain as a
    // zombie.
    std::thread([program, arguments = std::move(arguments), environment = std::move(environment),
                    promise = std::move(promise)]() mutable {
        TakeOrdinaryPriority();
        pid_t child = -1;
        try {
            child = SpawnProgram(program, std::move(arguments), std::move(environment));
        } catch (...) { // no memory: it isn't started
            child = -1;
        }
        promise.set_value(child > 0);
        if (child > 0) Reap(child);
    }).detach();
    return started.get();
}

} // namespace KAV::Platform
