// Writes the manual page of kavhost, and what shells need to complete its command lines.
//     kavhost_man PAGE BASH ZSH

#include "tools/kavhost/console/options.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

void Write(const char* name, const std::string& text) {
    std::ofstream file(name, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(std::string("cannot write ") + name);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: kavhost_man PAGE BASH ZSH\n";
        return 2;
    }
    try {
        Write(argv[1], KAV::Host::ManPage());
        Write(argv[2], KAV::Host::ShellCompletion(KAV::Host::EShell::Bash));
        Write(argv[3], KAV::Host::ShellCompletion(KAV::Host::EShell::Zsh));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "kavhost_man: " << error.what() << '\n';
    }
    return 1;
}
