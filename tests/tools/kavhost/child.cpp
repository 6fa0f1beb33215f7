#include "tests/tools/kavhost/child.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace KAV::Tests {

namespace {

std::string Content(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

[[noreturn]] void Die() {
    _exit(99);
}

void Redirect(int stream, const std::filesystem::path& file, int flags = O_WRONLY | O_CREAT | O_TRUNC) {
    const int opened = open(file.c_str(), flags, 0600);
    if (opened < 0 || dup2(opened, stream) < 0) Die();
}

} // namespace

CChild::CChild(std::vector<std::string> arguments, const SOptions& options) {
    const auto folder = NewFolder();
    _out = options.standardOutput.empty() ? folder / "out" : options.standardOutput;
    _errors = folder / "errors";
    int terminal = -1;
    if (options.errorsToTerminal) {
        _terminal = posix_openpt(O_RDWR | O_NOCTTY);
        if (_terminal < 0 || grantpt(_terminal) != 0 || unlockpt(_terminal) != 0) {
            throw std::runtime_error("no terminal");
        }
        terminal = open(ptsname(_terminal), O_RDWR | O_NOCTTY);
    }
    std::string program = options.program.string();
    std::vector<char*> values{program.data()};
    for (auto& argument : arguments) values.push_back(argument.data());
    values.push_back(nullptr);

    _process = fork();
    if (_process < 0) throw std::runtime_error("no process");
    if (_process == 0) {
        if (!options.standardInput.empty()) Redirect(STDIN_FILENO, options.standardInput, O_RDONLY);
        if (options.outputToTerminal)
            dup2(terminal, STDOUT_FILENO);
        else
            Redirect(STDOUT_FILENO, _out);
        if (terminal >= 0)
            dup2(terminal, STDERR_FILENO);
        else
            Redirect(STDERR_FILENO, _errors);
        if (options.mostFileBytes > 0) {
            const rlimit limit{options.mostFileBytes, options.mostFileBytes};
            if (setrlimit(RLIMIT_FSIZE, &limit) != 0) Die();
        }
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            std::signal(signal, SIG_DFL); // a shell may ignore them
        execv(values[0], values.data());
        Die();
    }
    if (terminal >= 0) close(terminal);
}

void CChild::Signal(int number) const {
    kill(_process, number);
}

std::string CChild::OutputSoFar() const {
    return Content(_out);
}

SRun CChild::Wait() {
    const std::string terminal = _terminal >= 0 ? TerminalOutput() : std::string{};
    int status = 0;
    waitpid(_process, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return {code, std::filesystem::is_regular_file(_out) ? Content(_out) : std::string{},
        _terminal >= 0 ? terminal : Content(_errors)};
}

std::string CChild::TerminalOutput() const {
    std::string text;
    std::array<char, 4096> buffer{};
    for (;;) { // until the child has closed its side
        const auto count = read(_terminal, buffer.data(), buffer.size());
        if (count <= 0) return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

std::string OnScreen(const std::string& text) {
    std::string screen, line;
    std::size_t column = 0;
    const auto endLine = [&] {
        line.erase(line.find_last_not_of(' ') + 1);
        screen += line;
        line.clear();
        column = 0;
    };
    for (const char letter : text) {
        if (letter == '\r') {
            column = 0;
        } else if (letter == '\n') {
            endLine();
            screen += '\n';
        } else {
            if (column == line.size()) line += ' ';
            line[column++] = letter;
        }
    }
    endLine();
    return screen;
}

} // namespace KAV::Tests
