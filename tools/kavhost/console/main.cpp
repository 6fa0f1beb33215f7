#include "platform/command_line.h"
#include "platform/interrupt.h"
#include "platform/terminal.h"
#include "tools/kavhost/console/commands.h"
#include "tools/kavhost/console/standard_buffer.h"

#include <iostream>

int main(int argc, char** argv) {
    namespace Platform = KAV::Platform;
    using KAV::Host::CStandardBuffer;

    Platform::PrepareTerminal();
    Platform::WatchInterrupt();
    const CStandardBuffer out(std::cout, Platform::EStandardStream::Output);
    const CStandardBuffer errors(std::cerr, Platform::EStandardStream::Errors);
    const auto arguments = Platform::CommandLine(argc, argv);
    return static_cast<int>(KAV::Host::RunKavhost(arguments, std::cout, std::cerr));
}
