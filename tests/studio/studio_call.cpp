#include "tests/studio/studio_call.h"

#include <bit>
#include <gtest/gtest.h>

namespace KAV::Tests {

namespace {

using EKind = SStudioCall::EKind;

/// As hosts do it: the effect is suspended meanwhile.
template<typename TChange>
void Suspended(CHostedEffect& effect, const TChange& change) {
    effect.Dispatch(VST::effMainsChanged, 0, 0);
    change();
    effect.Dispatch(VST::effMainsChanged, 0, 1);
}

void SetChunk(CHostedEffect& effect, std::string chunk, bool isPreset) {
    EXPECT_EQ(effect.Dispatch(
                  VST::effSetChunk, isPreset ? 1 : 0, static_cast<std::intptr_t>(chunk.size()), chunk.data()),
        1);
}

} // namespace

void Make(const SStudioCall& call, CHostedEffect& effect) {
    switch (call.kind) {
    case EKind::New:
        break;
    case EKind::Parameter:
        effect.Set(static_cast<std::int32_t>(call.index), call.value);
        break;
    case EKind::Chunk:
    case EKind::Preset:
        SetChunk(effect, call.text, call.kind == EKind::Preset);
        break;
    case EKind::ProgramName: {
        std::string name = call.text;
        effect.Dispatch(VST::effSetProgramName, 0, 0, name.data());
        break;
    }
    case EKind::Channels:
        Suspended(effect, [&] {
            const auto channels = static_cast<std::int32_t>(call.index);
            EXPECT_TRUE(effect.SetChannels(channels, channels));
        });
        break;
    case EKind::Rate:
        Suspended(effect, [&] { effect.Dispatch(VST::effSetSampleRate, 0, 0, nullptr, call.value); });
        break;
    case EKind::Size:
        Suspended(effect,
            [&] { effect.Dispatch(VST::effSetBlockSize, 0, static_cast<std::intptr_t>(call.index)); });
        break;
    case EKind::Word:
        WriteWord(effect.Device(), call.index, call.bits);
        break;
    case EKind::Routing:
        effect.Device().State().SetRouting(call.text, static_cast<int>(call.index));
        break;
    }
}

std::string Described(const SStudioCall& call) {
    const auto what = [&call]() -> std::string {
        switch (call.kind) {
        case EKind::New:
            return "is created";
        case EKind::Parameter:
            return "parameter " + std::to_string(call.index) + " = " + std::to_string(call.value);
        case EKind::Chunk:
            return "chunk:\n" + call.text.substr(0, call.text.find('\0'));
        case EKind::Preset:
            return "preset:\n" + call.text.substr(0, call.text.find('\0'));
        case EKind::ProgramName:
            return "program name " + call.text;
        case EKind::Channels:
            return std::to_string(call.index) + " channels";
        case EKind::Rate:
            return std::to_string(call.value) + " Hz";
        case EKind::Size:
            return "blocks of " + std::to_string(call.index);
        case EKind::Word:
            return WordName(call.index) + " = " + std::to_string(std::bit_cast<float>(call.bits));
        case EKind::Routing:
            return "routing of group " + std::to_string(call.index + 1) + ":\n" + call.text;
        }
        return {};
    };
    return what();
}

std::vector<SStudioCall> Edits(std::size_t instance, const SSoundingState& from, const SSoundingState& to) {
    std::vector<SStudioCall> edits;
    // Routings first: in the group that is shown, one switches channels off that it doesn't have.
    for (std::size_t group = 0; group < to.routings.size(); ++group) {
        if (from.routings[group] != to.routings[group])
            edits.push_back(
                {.kind = EKind::Routing, .instance = instance, .index = group, .text = to.routings[group]});
    }
    const bool isWhole = !edits.empty(); // a word may have changed by the routing alone
    for (std::size_t word = 0; word < to.words.size(); ++word) {
        if (isWhole || from.words[word] != to.words[word])
            edits.push_back(
                {.kind = EKind::Word, .instance = instance, .index = word, .bits = to.words[word]});
    }
    return edits;
}

std::string Difference(const SSoundingState& is, const SSoundingState& shouldBe) {
    constexpr std::size_t enough = 8;
    auto edits = Edits(0, shouldBe, is);
    if (edits.size() > enough) edits.resize(enough);
    std::string text;
    for (const auto& edit : edits) text += (text.empty() ? "" : ", ") + Described(edit);
    return text;
}

} // namespace KAV::Tests
