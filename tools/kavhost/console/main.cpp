#include "platform/command_line.h"
#include "platform/interrupt.h"
#include "platform/terminal.h"
#include "tools/kavhost/console/commands.h"

#include <iostream>

int main(int argc, char** argv) {
    KAV::Platform::PrepareTerminal();
    KAV::Platform::WatchInterrupt();
    const auto arguments = KAV::Platform::CommandLine(argc, argv);
    return static_cast<int>(KAV::Host::RunKavhost(arguments, std::cout, std::cerr));
}
