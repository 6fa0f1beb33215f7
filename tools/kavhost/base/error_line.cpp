#include "tools/kavhost/base/error_line.h"

#include "tools/kavhost/base/text.h"

namespace KAV::Host {

void PrintError(std::ostream& errors, std::string_view message) {
    // In one piece, so that lines of other programs on the same terminal don't get between.
    errors << "kavhost: " + Printable(Trim(message)) + "\n" << std::flush;
}

} // namespace KAV::Host
