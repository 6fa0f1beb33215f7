#pragma once

#include "platform/standard_streams.h"

#include <ios>
#include <ostream>
#include <streambuf>
#include <string>

namespace KAV::Host {

/// Sends what a stream prints to a standard stream of the program. An interrupt ends waits for its reader,
/// where the stream's own buffer would begin to wait again.
class CStandardBuffer final : public std::streambuf {
public:
    /// Until the object ends, `stream` prints here.
    CStandardBuffer(std::ostream& stream, Platform::EStandardStream target);
    ~CStandardBuffer() override;

protected:
    int_type overflow(int_type letter) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

private:
    std::ostream& _stream;
    Platform::EStandardStream _target;
    std::streambuf* _before;
    std::string _text; ///< not yet sent
};

} // namespace KAV::Host
