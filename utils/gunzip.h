#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace KAV::Utils {

/// Inflates a gzip stream that comes in pieces. What is behind its end, or behind an error in it, is dropped.
/// Threads: one at a time.
class CGunzip final {
public:
    CGunzip();
    ~CGunzip();
    CGunzip(const CGunzip&) = delete;
    CGunzip& operator=(const CGunzip&) = delete;

    /// Appends to `text` what the next bytes of the stream hold, until it has more than `limit` bytes. False
    /// then: there may be more.
    bool Add(const char* data, std::size_t size, std::string& text, std::size_t limit);

private:
    struct SStream;
    std::unique_ptr<SStream> _stream; // null when there was no memory for it
};

} // namespace KAV::Utils
