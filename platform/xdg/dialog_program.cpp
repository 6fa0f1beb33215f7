#include "platform/xdg/dialog_program.h"

#include "platform/x11/raise_windows.h"
#include "platform/xdg/spawned_program.h"
#include "platform/xdg/xdg_folders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utf8/checked.h>
#include <utility>

namespace KAV::Platform {

namespace {

/// With its end, as the system has it; more isn't read.
constexpr std::size_t LongestPath = PATH_MAX;

/// A descriptor of this object's own.
class CDescriptor final {
public:
    explicit CDescriptor(int number = -1) noexcept : _number(number) {}
    ~CDescriptor() { Close(); }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    int Get() const noexcept { return _number; }
    void Set(int number) noexcept {
        Close();
        _number = number;
    }
    void Close() noexcept {
        if (_number >= 0) close(_number);
        _number = -1;
    }

private:
    int _number;
};

/// A pipe that is read without waiting, and whose writing end isn't one of the standard streams, because a
/// new program gets those anew.
bool MakePipe(CDescriptor& from, CDescriptor& to) noexcept {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
    from.Set(ends[0]);
    const CDescriptor written(ends[1]);
    to.Set(fcntl(written.Get(), F_DUPFD_CLOEXEC, 3));
    return to.Get() >= 0 && fcntl(from.Get(), F_SETFL, O_NONBLOCK) == 0;
}

/// Readable when the process has ended; -1 if the system can't say so.
int EndOf(pid_t program) noexcept {
    return static_cast<int>(syscall(SYS_pidfd_open, program, 0));
}

bool HasEnded(pid_t program) noexcept {
    siginfo_t info{};
    const int result = waitid(P_PID, static_cast<id_t>(program), &info, WEXITED | WNOHANG | WNOWAIT);
    return result == 0 ? info.si_pid == program : errno != EINTR;
}

/// Adds what the pipe holds now. False when nothing more will come.
bool ReadMore(int pipe, std::string& output) {
    std::array<char, 4096> part{};
    for (;;) {
        const auto count = read(pipe, part.data(), part.size());
        if (count > 0) output.append(part.data(), static_cast<std::size_t>(count));
        if (count == 0 || output.size() > LongestPath) return false;
        if (count < 0 && errno != EINTR) return errno == EAGAIN;
    }
}

/// What the program prints until it ends. It may close its output before, and something that it has started
/// may hold the output open afterwards.
std::string OutputOf(
    pid_t program, CDescriptor& pipe, const CEnvironment& environment, CDialogControl& control) {
    const CDescriptor ended(EndOf(program));
    std::string output;
    for (;;) {
        std::array<pollfd, 3> waits{
            {{control.Descriptor(), POLLIN, 0}, {ended.Get(), POLLIN, 0}, {pipe.Get(), POLLIN, 0}}};
        constexpr int lookAgainMs = 50; // without a descriptor for the end
        poll(waits.data(), waits.size(), ended.Get() < 0 ? lookAgainMs : -1);
        const bool hasEnded = HasEnded(program);
        // A program that goes on writing is better off without a reader than with one that is full.
        if (pipe.Get() >= 0 && !ReadMore(pipe.Get(), output)) pipe.Close();
        if (hasEnded || control.IsEnded()) return output;
        if (control.TakeRaise()) RaiseWindowsOf(program, environment.Value("DISPLAY"));
    }
}

/// `status` is what waitpid() gave.
SFileAnswer Understand(int status, std::string output) {
    if (status != -1 && (!WIFEXITED(status) || WEXITSTATUS(status) != 0)) return {};
    const bool isWhole = output.ends_with('\n');
    if (isWhole) output.pop_back();
    // The status of a program that the host has reaped isn't known: then the line has to be complete.
    if (output.empty() || (status == -1 && !isWhole)) return {};
    return AnswerOfPath(std::move(output));
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const auto& text : texts) joined.append(joined.empty() ? "" : " ").append(text);
    return joined;
}

} // namespace

SFileAnswer AnswerOfPath(std::string path) {
    const bool isUsable = path.size() < LongestPath && path.starts_with('/') && !path.ends_with('/') &&
                          path.find_first_of(std::string_view("\0\n\r\\", 4)) == std::string::npos &&
                          utf8::is_valid(path.begin(), path.end());
    if (!isUsable) return {EFileAnswer::Unusable, {}};
    return {EFileAnswer::Chosen, std::move(path)};
}

std::string ExistingFolder(const SFileRequest& request) {
    std::error_code error;
    if (!request.folder.starts_with('/') || !std::filesystem::is_directory(request.folder, error)) return {};
    return request.folder.ends_with('/') ? request.folder : request.folder + '/';
}

std::string ProposedName(const SFileRequest& request) {
    auto name = request.name;
    const auto isUnfit = [](char letter) {
        return letter == '/' || letter == '\\' || (letter >= 0 && letter < ' ');
    };
    std::ranges::replace_if(name, isUnfit, '_');
    return name == "." || name == ".." ? std::string() : name;
}

std::vector<std::string> BothCases(const SFileFilter& filter) {
    std::vector<std::string> patterns;
    const auto add = [&patterns](std::string pattern) {
        if (std::ranges::find(patterns, pattern) == patterns.end()) patterns.push_back(std::move(pattern));
    };
    for (const auto& pattern : filter.patterns) {
        auto upper = pattern;
        for (auto& letter : upper)
            letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
        add(pattern);
        add(std::move(upper));
    }
    return patterns;
}

std::vector<std::string> ZenityArguments(const SFileRequest& request) {
    std::vector<std::string> arguments{"--file-selection", "--title=" + request.title};
    if (request.saves) arguments.insert(arguments.end(), {"--save", "--confirm-overwrite"});
    if (request.hostWindow != 0)
        arguments.insert(arguments.end(), {"--modal", "--attach=" + std::to_string(request.hostWindow)});
    const auto start = ExistingFolder(request) + (request.saves ? ProposedName(request) : std::string());
    if (!start.empty()) arguments.push_back("--filename=" + start);
    for (const auto& filter : request.filters) {
        auto title = filter.title;
        std::ranges::replace(title, '|', '/'); // separates the title from the patterns
        arguments.push_back("--file-filter=" + title + " | " + Joined(BothCases(filter)));
    }
    return arguments;
}

std::vector<std::string> KdialogArguments(const SFileRequest& request, const CEnvironment& environment) {
    std::vector<std::string> arguments{"--title", request.title};
    if (request.hostWindow != 0)
        arguments.insert(arguments.end(), {"--attach", std::to_string(request.hostWindow)});
    auto start = ExistingFolder(request);
    if (request.saves) {
        // A name alone would be a file of the folder that the host happens to be in.
        if (start.empty()) start = HomeFolder(environment.Value("HOME")).string() + '/';
        start += ProposedName(request);
    }
    arguments.insert(arguments.end(), {request.saves ? "--getsavefilename" : "--getopenfilename", start});
    std::string filters;
    for (const auto& filter : request.filters) {
        filters.append(filters.empty() ? "" : "\n").append(filter.title);
        filters.append(" (").append(Joined(BothCases(filter))).append(")");
    }
    if (!filters.empty()) arguments.push_back(filters);
    return arguments;
}

std::optional<SFileAnswer> AskProgram(const std::string& program, std::vector<std::string> arguments,
    const CEnvironment& environment, CDialogControl& control) {
    CDescriptor from;
    CDescriptor to;
    if (program.empty() || !MakePipe(from, to)) return std::nullopt;
    const auto child = SpawnProgram(program, std::move(arguments), environment, to.Get());
    if (child <= 0) return std::nullopt;
    to.Close();
    control.SetProgram(child);
    std::string output;
    try {
        output = OutputOf(child, from, environment, control);
    } catch (...) { // no memory: the program has to be reaped all the same
        control.End();
    }
    control.ForgetProgram();
    const int status = Reap(child);
    // The system's loader and the shell have these for programs that couldn't run at all.
    constexpr int notExecutable = 126;
    constexpr int notFound = 127;
    const int code = status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    if (code == notExecutable || code == notFound) return std::nullopt;
    if (control.IsEnded()) return SFileAnswer{};
    return Understand(status, std::move(output));
}

} // namespace KAV::Platform
