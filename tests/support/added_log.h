#pragma once

#include "tests/support/file_text.h"
#include "utils/path.h"
#include "utils/session_log.h"

#include <string>

namespace KAV::Tests {

/// What the session log gets while this object lives.
class CAddedLog final {
public:
    CAddedLog() {
        Utils::LogLine(u"Test="); // takes the file and writes the date, if no test before has done so
        _before = Whole().size();
    }
    std::string Text() const { return Whole().substr(_before); }

private:
    static std::string Whole() { return ReadText(Utils::ToSystemPath(Utils::LogPath())); }

    std::size_t _before = 0;
};

} // namespace KAV::Tests
