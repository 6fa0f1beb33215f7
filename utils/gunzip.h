#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace KAV::Utils {

/// Inflates a gzip stream that arrives in pieces. What follows its end, or an error in it, is dropped.
/// Threads: one at a time.
class CGunzip final {
public:
    CGunzip();
    ~CGunzip();
    CGunzip(const CGunzip&) = delete;
    CGunzip& operator=(const CGunzip&) = delete;

    /// Appends the inflated next bytes of the stream to `text`, until it has more than `limit` bytes. Then
    /// returns false: there may be more.
    bool Add(const char* data, std::size_t size, std::string& text, std::size_t limit);

private:
    struct SStream;
    std::unique_ptr<SStream> _stream; // null if there was no memory for it
};

} // namespace KAV::Utils
