#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace KAV::Utils {

/// Inflates a gzip stream that arrives in pieces. Bytes after its end, or after an error in it, are ignored.
/// Threads: one at a time.
class CGunzip final {
public:
    CGunzip();
    ~CGunzip();
    CGunzip(const CGunzip&) = delete;
    CGunzip& operator=(const CGunzip&) = delete;

    /// Inflates the next bytes of the stream and appends the result to `text`, until that has more than
    /// `limit` bytes. Then returns false: there may be more.
    bool Add(const char* data, std::size_t size, std::string& text, std::size_t limit);

private:
    struct SStream;
    std::unique_ptr<SStream> _stream; // null if there was no memory for it
};

} // namespace KAV::Utils
