#pragma once

#include "tests/dsp/reference/coverage.h"
#include "tests/dsp/reference/engine_face.h"
#include "tests/dsp/reference/material.h"
#include "tests/dsp/reference/random.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Reference {

/// What the host does around one block, in the order of the fields.
struct SHostBlock {
    std::optional<float> rate;
    std::optional<int> announced;
    SSettings settings;
    std::array<bool, 4> latch{};
    bool emptyCalls = false;  // calls without channels or samples, which must change nothing
    bool flushedHost = false; // the host itself flushes denormals
    int frames = 0;
    std::vector<std::vector<float>> audio;
};

/// A run of a few dozen blocks, which is the same for the same seed everywhere.
class CScenario final {
public:
    explicit CScenario(std::uint64_t seed);
    bool IsOver() const;
    SHostBlock Next();

private:
    enum class EKind { Short, Ordinary, Long, Silent, Calm, Fast, Raised };
    void ChooseKind();
    void ChooseStart();
    float ChooseRate();
    int ChooseFrames();
    int ChooseChannels();
    int ChooseAnnounced();
    float ChoosePosition(float present);
    void ChooseMaps();
    void ChooseMap(int group);
    void ChooseToggles();
    void MovePositions();
    void FlipSwitches();

    CRandom _random;
    EKind _kind = EKind::Ordinary;
    int _blocks = 0;
    int _done = 0;
    int _frames = 0; // the usual length
    int _channels = 2;
    double _move = 0.0;     // chance of each position to move before a block
    double _flip = 0.0;     // chance of each switch
    double _unsteady = 0.0; // chance of another rate, channel count or announcement
    bool _fixedFrames = false;
    SSettings _settings;
    std::array<CMaterial, 16> _materials;
};

struct SRunResult {
    bool equal = true;
    std::string difference; // seed and place of the first difference; empty when equal
};

/// Both engines must be new. They get the same calls and the same sound. After each block the sound, the
/// latency, the meters, the reported gains and the flush bits of the control word are compared bit for bit
/// (all NaNs count as equal).
SRunResult RunScenario(std::uint64_t seed, IEngine& reference, IEngine& subject);

std::unique_ptr<IEngine> MakeReferenceEngine(CCoverage& coverage);

} // namespace KAV::Reference
