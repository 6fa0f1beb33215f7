#pragma once

#include "platform/library.h"
#include "vst/vst2.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace KAV::Tests {

/// The smallest possible host: it only reports a version.
inline std::intptr_t SmallestHost(
    VST::AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float) {
    return opcode == VST::audioMasterVersion ? VST::kVstVersion : 0;
}

/// The library as delivered, loaded the way a host loads it.
class CLoadedLibrary final {
public:
    explicit CLoadedLibrary(const std::filesystem::path& file = KAV_PLUGIN_PATH) {
        std::string reason;
        _library = Platform::OpenLibrary(file, reason);
        EXPECT_NE(_library, nullptr) << reason;
    }
    ~CLoadedLibrary() {
        if (_library != nullptr) Platform::CloseLibrary(_library);
    }
    CLoadedLibrary(const CLoadedLibrary&) = delete;
    CLoadedLibrary& operator=(const CLoadedLibrary&) = delete;

    VST::PluginEntry Entry(const char* name = "VSTPluginMain") const {
        return reinterpret_cast<VST::PluginEntry>(Platform::FindSymbol(_library, name));
    }

private:
    void* _library;
};

/// A host's calls in the shortest session, optionally with a state to load.
inline void RunSession(VST::PluginEntry entry, std::string chunk = {}) {
    using namespace VST;
    AEffect* effect = entry(SmallestHost);
    ASSERT_NE(effect, nullptr);
    effect->dispatcher(effect, effOpen, 0, 0, nullptr, 0.0f);
    effect->dispatcher(effect, effSetSampleRate, 0, 0, nullptr, 48000.0f);
    effect->dispatcher(effect, effSetBlockSize, 0, 256, nullptr, 0.0f);
    if (!chunk.empty()) {
        const auto size = static_cast<std::intptr_t>(chunk.size());
        EXPECT_EQ(effect->dispatcher(effect, effSetChunk, 0, size, chunk.data(), 0.0f), 1);
        void* data = nullptr;
        EXPECT_GT(effect->dispatcher(effect, effGetChunk, 0, 0, &data, 0.0f), size);
    }
    effect->dispatcher(effect, effMainsChanged, 0, 1, nullptr, 0.0f);
    std::vector<float> left(256, 0.5f);
    std::vector<float> right(256, -0.5f);
    float* channels[] = {left.data(), right.data()};
    effect->processReplacing(effect, channels, channels, 256);
    EXPECT_TRUE(std::isfinite(left[255]));
    EXPECT_EQ(effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f), 1);
}

} // namespace KAV::Tests
