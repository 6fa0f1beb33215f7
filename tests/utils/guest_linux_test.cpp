// The library in a host's process: whatever is called, the process's own state stays the same.

#include "tests/support/display.h"
#include "tests/support/scratch_home.h"
#include "utils/cpu_features.h"
#include "utils/location.h"
#include "utils/number.h"
#include "utils/path.h"
#include "utils/scan_folder.h"
#include "utils/session_log.h"
#include "utils/shell_open.h"
#include "utils/thread.h"

#include <clocale>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

struct SProcess {
    std::string locale;
    std::string folder;
    std::vector<std::string> environment;
    std::vector<void (*)(int)> handlers;
    std::vector<int> blocked;

    bool operator==(const SProcess&) const = default;
};

SProcess Look() {
    SProcess process;
    process.locale = std::setlocale(LC_ALL, nullptr);
    process.folder = std::filesystem::current_path().string();
    for (char** variable = environ; *variable != nullptr; ++variable)
        process.environment.emplace_back(*variable);
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        process.handlers.push_back(action.sa_handler);
        process.blocked.push_back(sigismember(&mask, number));
    }
    return process;
}

struct SClient final : CThread::IOnThread {
    void OnThread(CThread*) override {}
};

} // namespace

TEST(Guest, LeavesLocaleFolderEnvironmentAndSignalsAsTheyWere) {
    const CDisplay display;
    std::setlocale(LC_ALL, "C.UTF-8");
    const SProcess before = Look();

    LogSessionStart();
    LogSessionEnd();
    DetectFeatures(true);
    std::size_t size = 0;
    WriteUniversal(u"HKEY_CURRENT_USER/Software/Kavelin/Test/Width", "1234", 4);
    ReadUniversal(u"HKEY_CURRENT_USER/Software/Kavelin/Test/Width", size);
    EXPECT_EQ(WriteUniversal(u"clipboard:test", "1234", 4), 4u);
    ReadUniversal(u"clipboard:test", size);
    EXPECT_EQ(size, 4u);
    const auto file = FromSystemPath(ScratchFolder() / "file");
    EXPECT_EQ(WriteUniversal(file, "1234", 4), 4u);
    ReadUniversal(file, size);
    ScanFolder(GetFolder(file), u"");
    GetDocumentsFolder();
    GetModulePath();
    ToFloat("1.5", 0.0f);
    FormatFixed(1.5, 3);
    ShellOpen(u"/nothing/there");
    {
        SClient client;
        CThread thread(client);
        thread.Start();
    }
    EXPECT_TRUE(Look() == before);
}
