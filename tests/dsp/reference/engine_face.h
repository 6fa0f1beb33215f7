#pragma once

/// The interface that a signal path needs to be compared with the plain reference model: the settings it
/// reads, and the few calls a host makes. It doesn't depend on how either side is built.
namespace KAV::Reference {

/// Everything the engine reads once per block. Positions are normalised 0..1.
struct SSettings {
    bool channelInGroup[16][4] = {{true}, {true}}; // [entry][group] toggles
    bool solo[4] = {};
    bool mute[4] = {};
    int oversampling = 0; // index 0..3, factor = 2^index
    float inputGain[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    float threshold[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    float release[4] = {0.4f, 0.4f, 0.4f, 0.4f};
    float ceiling[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    bool autoRelease[4] = {};
    bool limiter[4] = {true, true, true, true};
    float mainInput = 0.5f;
    float mainOutput = 0.5f;
    bool hostBypass = false;
    bool groupsParallel = false;
    bool simd = false;
    int editedGroup = 0;
    bool highQuality = false;
    int type[4] = {}; // of each group's routing; 1 is mid/side, the others don't differ
    // Routing map per group: entry -> two channel numbers, -1 for none.
    int map[4][16][2] = {{{0, -1}, {1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1},
                             {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},
        {{0, -1}, {1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1},
            {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},
        {{0, -1}, {1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1},
            {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},
        {{0, -1}, {1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1},
            {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}}};
};

class IEngine {
public:
    virtual ~IEngine() = default;
    virtual void SetSampleRate(float rate) = 0;
    virtual void SetBlockSize(int frames) = 0;
    virtual void Apply(const SSettings& settings) = 0;
    virtual void Process(float* const* channels, int channelCount, int frames) = 0; // in place
    virtual int GetLatency() = 0;
    virtual double ReportedGain(int group) = 0;
    virtual void SetLatch(int group) = 0;
    virtual float Meter(int tag) = 0; // -4..-55
};

} // namespace KAV::Reference
