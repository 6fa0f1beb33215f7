// What an instance keeps, without any widget: only a device, and a host that hears of values.

#include "state/device_state.h"

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "tests/support/faulty_files.h"
#include "tests/support/state_fixture.h"

#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// A state of its own on the device of an instance, whose widgets know nothing of it.
class DeviceState : public State {
protected:
    using Told = std::vector<std::pair<std::int32_t, float>>;

    /// A host that writes down the values that it is told.
    struct SHost final : IHostRoad {
        void BeginEdit(std::int32_t) noexcept override {}
        void Value(std::int32_t index, float normal) noexcept override {
            told.emplace_back(index, normal);
            if (answer) answer();
        }
        void EndEdit(std::int32_t) noexcept override {}
        void Latency(std::int32_t) noexcept override {}
        bool Size(std::int32_t, std::int32_t) noexcept override { return true; }
        std::uint32_t NowMs() const noexcept override { return 0; }

        Told told;
        std::function<void()> answer;
    };

    SHost listener;
    std::unique_ptr<CDeviceState> own = MakeOwn();

    std::unique_ptr<CDeviceState> MakeOwn() {
        return std::make_unique<CDeviceState>(Device(), Device(), listener);
    }
    void Write(const std::string& file, const std::string& threshold) {
        WriteText(documents.Patch(file),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name></"
            "patch_name>\r\n<param tag=\"33\" >" +
                threshold + "</param>\r\n");
    }
    float Threshold() { return Device().GetParam(33, BaseValue); }
    /// Whether the record gets another generation from an operation.
    template<typename TOperation>
    bool Moves(TOperation operation) {
        const auto before = own->Generation();
        operation();
        return own->Generation() != before;
    }
    template<typename TRead>
    auto Panel(TRead read) {
        const Utils::CTurn turn(own->Turns());
        return read(own->Panel(turn));
    }
};

const std::string LCR = "<kav_input_routing>\r\n\t<name>LCR</name>\r\n\t<map>0,-1|*|1,-1|*|2,-1</map>\r\n"
                        "\t<ch_names>L|*|C|*|R</ch_names>\r\n</kav_input_routing>";

} // namespace

TEST_F(DeviceState, BeginsWithTheFirstOfTheUsersPatchesAndNoneSelected) {
    EXPECT_EQ(own->PatchName(), u"Default");
    Write("a.kvp", "0.5");
    own = MakeOwn();
    EXPECT_EQ(own->PatchName(), u"a");
    EXPECT_EQ(own->PatchNameAt(0), u"a");
    EXPECT_EQ(own->PatchNameAt(1), u"");
    EXPECT_EQ(own->CurrentPatch(), -1);
    EXPECT_NE(own->PatchText(0).find("<patch_name>a</patch_name>"), std::string::npos);
}

TEST_F(DeviceState, TheListIsThatOfTheFolderAndThePlaceIsKept) {
    Write("a.kvp", "0.5");
    Write("b.kvp", "0.25");
    own = MakeOwn();
    EXPECT_EQ(own->CurrentPatch(), -1);
    own->SelectPatch(1, false);
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_EQ(own->CurrentPatch(), 1);
    Device().SetParam(33, 0.75f, 0);
    own->SelectPatch(1, false);
    EXPECT_EQ(Threshold(), 0.75f) << "it is the present one";
    own->SelectPatch(2, false);
    EXPECT_EQ(own->CurrentPatch(), 1);
}

TEST_F(DeviceState, IsWrittenAndReadWhole) {
    own->NameGroup(1, u"Drums");
    own->NameMacro(4, u"Push");
    own->SetPatchName(u"Mine");
    own->ResizeToWidth(1000);
    own->SetRouting(LCR, 0);
    Device().SetParam(33, 0.25f, 0);
    const auto text = own->PatchText(HostChunkFlags);
    const auto withoutRoutings = own->PatchText(HostChunkFlags & ~std::uint32_t{KAV::Routing});
    own->NameGroup(1, u"2");
    own->NameMacro(4, u"x");
    own->SetPatchName(u"Other");
    own->ResizeToWidth(754);
    own->SetRouting("<map>0,-1</map>", 0);
    Device().SetParam(33, 0.5f, 0);
    EXPECT_NE(own->PatchText(HostChunkFlags), text);
    EXPECT_TRUE(own->ApplyPatchData(text.data(), text.size(), HostChunkFlags));
    EXPECT_EQ(own->PatchText(HostChunkFlags & ~std::uint32_t{KAV::Routing}), withoutRoutings);
    EXPECT_TRUE(Panel([](const SPanelState& panel) {
        return panel.groupNames[1] == u"Drums" && panel.macroNames[4] == u"Push" && panel.entries == 3 &&
               panel.labels[1] == u"C" && panel.routing.Name() == u"LCR" && panel.width == 1000 &&
               panel.height == 733;
    }));
    EXPECT_EQ(own->PatchName(), u"Mine");
}

TEST_F(DeviceState, SwitchesAndCopiesSides) {
    Device().SetParam(33, 0.25f, 0);
    own->SwitchAB(0);
    Device().SetParam(33, 0.5f, 0);
    own->SwitchAB(1);
    EXPECT_EQ(Threshold(), 0.25f);
    own->CopyAB();
    Device().SetParam(33, 0.75f, 0);
    own->SwitchAB(0);
    EXPECT_EQ(Threshold(), 0.25f);
}

TEST_F(DeviceState, CopiesAGroupThatIsSelected) {
    Device().SetParam(33, 0.25f, 0);
    own->SetRouting(LCR, 2);
    own->SelectGroup(1, false);
    EXPECT_EQ(Device().GetParam(133, 0), 1.0f);
    Device().SetCurrentGroup(0);
    own->SelectGroup(2, true);
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    EXPECT_EQ(Device().GetParam(233, 0), 0.25f);
    EXPECT_EQ(own->RoutingName(), u"LCR") << "and shows its routing";
}

TEST_F(DeviceState, SavesARoutingOfTheEntriesThatAreOn) {
    own->SetRouting(LCR, 0);
    own->NameChannel(2, u"Right"); // nobody edits it
    std::array<bool, SPanelState::Channels> on{};
    on[0] = on[2] = true;
    own->SaveRouting(Utils::FromSystemPath(documents.Routing("Mine.kvt")), on);
    EXPECT_EQ(own->RoutingName(), u"Mine");
    EXPECT_NE(own->GetRouting(0).find("<ch_names>L|*|R</ch_names>"), std::string::npos);
    EXPECT_EQ(Panel([](const SPanelState& panel) { return panel.routing.Count(); }), 2);
}

TEST_F(DeviceState, ANameTheHostSetsAgainLeavesThePatchsPlace) {
    Write("x.kvp", "0.5");
    Write("x.KVP", "0.25");
    Write("y.kvp", "0.125");
    own = MakeOwn();
    if (own->PatchNameAt(2).empty()) GTEST_SKIP() << "this system's names know no case";
    own->ChoosePatch(1, u"x");
    own->SetPatchName(u"x");
    EXPECT_EQ(own->CurrentPatch(), 1);
    own->SetPatchName(u"y");
    EXPECT_EQ(own->CurrentPatch(), 2);
    own->SetPatchName(u"x");
    EXPECT_EQ(own->CurrentPatch(), 0);
}

TEST_F(DeviceState, ItsGenerationMovesWithAllThatIsShown) {
    Write("a.kvp", "0.5");
    Write("b.kvp", "0.5");
    WriteText(documents.Routing("a.kvt"), "<map>0,-1|*|1,-1</map>");
    WriteText(documents.Routing("b.kvt"), "<map>0,-1|*|1,-1</map>");
    own = MakeOwn();
    EXPECT_TRUE(Moves([&] { own->NameGroup(3, u"x"); }));
    EXPECT_TRUE(Moves([&] { own->NameMacro(3, u"x"); }));
    EXPECT_TRUE(Moves([&] { own->BeginRoutingEdit(); }));
    EXPECT_TRUE(Moves([&] { own->NameChannel(15, u"x"); }));
    EXPECT_TRUE(Moves([&] { own->EndRoutingEdit(); }));
    EXPECT_TRUE(Moves([&] { own->SetRouting("<type>mid/side</type><map>0,-1|*|1,-1</map>", 0); }));
    EXPECT_TRUE(Moves([&] { own->SetPatchName(u"x"); }));
    EXPECT_TRUE(Moves([&] { own->ChoosePatch(1, u"b"); }));
    EXPECT_TRUE(Moves([&] { own->SelectPatch(0, true); }));
    EXPECT_TRUE(Moves([&] { own->SelectRouting(0, false); }));
    EXPECT_TRUE(Moves([&] { own->ChooseRouting(1, u"b"); }));
    EXPECT_TRUE(Moves([&] { own->SetRouting("<name>b</name><map>0,-1|*|1,-1|*|2,-1</map>", 0); }));
    EXPECT_TRUE(Moves([&] { own->ResizeTo(900, 553); }));
    EXPECT_TRUE(Moves([&] { own->ResizeTo(900, 600); }));
    EXPECT_TRUE(Moves([&] { own->SavePatch(Utils::FromSystemPath(documents.Patch("c.kvp")), 0); }));
    EXPECT_TRUE(Moves([&] {
        own->SaveRouting(
            Utils::FromSystemPath(documents.Routing("c.kvt")), std::array<bool, SPanelState::Channels>{});
    }));
    EXPECT_TRUE(Moves([&] { own->ReadPatch("<patch_name>n</patch_name>", 0); }));
    EXPECT_TRUE(Moves([&] { own->ReadPatch("<patch_name>n</patch_name><fx_names>n</fx_names>", 0); }));
    const std::string macro = "<patch_name>n</patch_name><macro group=\"1\">";
    EXPECT_TRUE(Moves([&] { own->ReadPatch(macro + "33;0.25</macro>", 0); })) << "another table of macros";
    EXPECT_TRUE(Moves([&] { own->ReadPatch(macro + "33;0.75</macro>", 0); }));
    EXPECT_TRUE(Moves([&] { own->ReadPatch(macro + "32;0.75</macro>", 0); }));
    EXPECT_TRUE(Moves([&] { own->ReadPatch("<patch_name>n</patch_name>", 0); }));
}

TEST_F(DeviceState, ItsGenerationRestsWhenNothingThatIsShownChanges) {
    own->SetRouting(LCR, 0);
    own->NameGroup(0, u"x");
    own->SetPatchName(u"n");
    own->AssignMacro(0, 33, 0.75f);
    const auto text = own->PatchText(HostChunkFlags);
    EXPECT_FALSE(Moves([&] { own->NameGroup(0, u"x"); }));
    EXPECT_FALSE(Moves([&] { own->NameGroup(4, u"y"); }));
    EXPECT_FALSE(Moves([&] { own->NameMacro(5, u"y"); }));
    EXPECT_FALSE(Moves([&] { own->NameChannel(0, u"y"); })) << "no routing is edited";
    EXPECT_FALSE(Moves([&] { own->EndRoutingEdit(); }));
    EXPECT_FALSE(Moves([&] { own->CancelRoutingEdit(); }));
    own->BeginRoutingEdit();
    EXPECT_FALSE(Moves([&] { own->BeginRoutingEdit(); }));
    EXPECT_FALSE(Moves([&] { own->NameChannel(16, u"y"); }));
    EXPECT_FALSE(Moves([&] { own->ApplyRouting(); }));
    own->EndRoutingEdit();
    EXPECT_FALSE(Moves([&] { own->SetPatchName(u"n"); }));
    EXPECT_FALSE(Moves([&] { own->SetParameter(33, 0.125f); }));
    EXPECT_FALSE(Moves([&] { own->ReadPatch(text, HostChunkFlags); })) << "it shows the same";
    EXPECT_FALSE(Moves([&] { own->SetRouting(LCR, 1); })) << "another group's";
    EXPECT_FALSE(Moves([&] { own->ApplyRouting(); }));
    EXPECT_FALSE(Moves([&] { own->CopyAB(); }));
    EXPECT_FALSE(Moves([&] { own->PatchText(HostChunkFlags); }));
    EXPECT_FALSE(Moves([&] { own->ResizeToWidth(754); }));
}

TEST_F(DeviceState, AssignsAControlToAMacro) {
    own->AssignMacro(4, 133, 0.75f);
    EXPECT_EQ(Device().Sensitivity(4, 133), 0.75f);
    EXPECT_NE(own->PatchText(0).find("<macro group=\"4\">133;0.750</macro>"), std::string::npos);
    own->AssignMacro(4, 133, 0.5f);
    EXPECT_NE(own->PatchText(0).find("<macro group=\"4\"></macro>"), std::string::npos);
    const auto text = own->PatchText(0);
    own->AssignMacro(5, 133, 0.75f);
    EXPECT_EQ(own->PatchText(0), text) << "there are five macros";
}

TEST_F(DeviceState, TellsTheHostInOrderAndOutsideTheTurn) {
    std::vector<std::u16string> seen;
    listener.answer = [&] { // as a host that waits for a thread which asks for the state
        std::thread([&] { seen.push_back(own->PatchName()); }).join();
    };
    own->ReadPatch("<multi_fx>1</multi_fx>\r\n<patch_name>whole</patch_name>\r\n"
                   "<param tag=\"33\" >0.25</param>\r\n<param tag=\"32\" >0.5</param>\r\n"
                   "<param tag=\"33\" >0.75</param>\r\n",
        0);
    EXPECT_EQ(listener.told, (Told{{4, 0.25f}, {0, 0.5f}, {4, 0.75f}}));
    EXPECT_EQ(seen, std::vector<std::u16string>(3, u"whole"));
}

TEST_F(DeviceState, IsPartOfItsCallersTurn) {
    {
        const Utils::CTurn turn(own->Turns());
        own->SetParameter(33, 0.25f);
        own->SwitchAB(0);
        EXPECT_EQ(own->PatchName(), u"Default");
        EXPECT_TRUE(listener.told.empty());
    }
    EXPECT_EQ(listener.told.size(), 1u);
}

TEST_F(DeviceState, AWitnessSeesTheStateThatAPatchReplaces) {
    struct SWitness final : IPatchWitness {
        explicit SWitness(CDeviceState& itsState) : state(itsState) {}
        void BeforePatch(Utils::CTurn& turn) override { seen.push_back(state.Panel(turn).patch.Name()); }
        CDeviceState& state;
        std::vector<std::u16string> seen;
    } witness(*own);
    {
        const Utils::CTurn turn(own->Turns());
        own->SetWitness(turn, &witness);
    }
    own->ReadPatch("<patch_name>a</patch_name>", 0);
    own->ReadPatch("<patch_name>b</patch_name>", 0);
    own->ReadPatch("", 0);
    EXPECT_EQ(witness.seen, (std::vector<std::u16string>{u"Default", u"a"}));
}

// Questions to the user, and what happens until they are answered

TEST_F(DeviceState, SavesThePatchAsItIsWhenTheUserAnswers) {
    dialogs.answersLater = true;
    Device().SetParam(33, 0.25f, 0);
    EXPECT_FALSE(own->SavePatch({}, 0)) << "not yet";
    Device().SetParam(33, 0.75f, 0);
    Write("a.kvp", "0.5"); // somebody else's
    EXPECT_FALSE(std::filesystem::exists(documents.Patch("mine.kvp")));
    dialogs.AnswerNext(Utils::FromSystemPath(documents.Patch("mine")));
    EXPECT_EQ(own->PatchName(), u"mine");
    EXPECT_EQ(own->CurrentPatch(), 1);
    EXPECT_EQ(own->PatchNameAt(0), u"a");
    Device().SetParam(33, 0.5f, 0);
    EXPECT_TRUE(own->OpenPatch(Utils::FromSystemPath(documents.Patch("mine.kvp"))));
    EXPECT_EQ(Threshold(), 0.75f);
}

TEST_F(DeviceState, OpensThePatchThatIsStillThereWhenTheUserAnswers) {
    dialogs.answersLater = true;
    Write("a.kvp", "0.25");
    Device().SetParam(33, 0.75f, 0);
    EXPECT_FALSE(own->OpenPatch({})) << "not yet";
    EXPECT_EQ(Threshold(), 0.75f);
    dialogs.AnswerNext(Utils::FromSystemPath(documents.Patch("a.kvp")));
    EXPECT_EQ(Threshold(), 0.25f);
    Device().SetParam(33, 0.75f, 0);
    own->OpenPatch({});
    std::filesystem::remove(documents.Patch("a.kvp"));
    dialogs.AnswerNext(Utils::FromSystemPath(documents.Patch("a.kvp")));
    EXPECT_EQ(Threshold(), 0.75f);
    EXPECT_EQ(own->PatchName(), u"a");
}

TEST_F(DeviceState, SavesTheRoutingThatWasShownWhenTheUserWasAsked) {
    dialogs.answersLater = true;
    own->SetRouting(LCR, 0);
    own->SetRouting("<name>other</name><map>0,-1</map><ch_names>Z</ch_names>", 1);
    {
        std::array<bool, SPanelState::Channels> on{};
        on[0] = on[2] = true;
        own->SaveRouting({}, on);
    } // what was on is copied
    own->SetRouting("<map>0,-1|*|1,-1|*|2,-1</map><ch_names>later|*|later|*|later</ch_names>", 0);
    own->SelectGroup(1, false);
    dialogs.AnswerNext(Utils::FromSystemPath(documents.Routing("Mine.kvt")));
    EXPECT_NE(own->GetRouting(0).find("<map>0,-1|*|2,-1</map>"), std::string::npos);
    EXPECT_NE(own->GetRouting(0).find("<ch_names>L|*|R</ch_names>"), std::string::npos);
    EXPECT_NE(own->GetRouting(1).find("<name>other</name>"), std::string::npos);
    EXPECT_EQ(own->RoutingName(), u"other") << "that of the group which is shown now";
}

TEST_F(DeviceState, TakesNoRoutingOverAPatchThatWasLoadedMeanwhile) {
    dialogs.answersLater = true;
    own->SaveRouting({}, std::array<bool, SPanelState::Channels>{true});
    own->ReadPatch("<kav_input_routing><fx>0</fx><name>loaded</name><map>1,-1</map></kav_input_routing>", 0);
    dialogs.AnswerNext(Utils::FromSystemPath(documents.Routing("Mine.kvt")));
    EXPECT_NE(ReadText(documents.Routing("Mine.kvt")).find("<map>0,-1</map>"), std::string::npos);
    EXPECT_EQ(Panel([](const SPanelState& panel) { return panel.routing.Count(); }), 2) << "listed";
    EXPECT_EQ(own->RoutingName(), u"loaded");
    EXPECT_NE(own->GetRouting(0).find("<map>1,-1</map>"), std::string::npos);
}

TEST_F(DeviceState, ACancelledQuestionChangesNothing) {
    dialogs.answersLater = true;
    const auto before = own->PatchText(HostChunkFlags);
    EXPECT_FALSE(Moves([&] {
        own->SavePatch({}, 0);
        dialogs.AnswerNext({});
        own->OpenPatch({});
        dialogs.AnswerNext({});
        own->SaveRouting({}, std::array<bool, SPanelState::Channels>{});
        dialogs.AnswerNext({});
    }));
    EXPECT_EQ(own->PatchText(HostChunkFlags), before);
    EXPECT_FALSE(std::filesystem::exists(documents.Patch("")));
    EXPECT_FALSE(std::filesystem::exists(documents.Routing("")));
}

TEST_F(DeviceState, ReplacesNoPatchThatTheUserHasNotConfirmed) {
    dialogs.answersLater = true;
    for (const auto* const chosen : {"mine", "mine.KVP"}) {
        WriteText(documents.Patch("mine.kvp"), "kept");
        own->SavePatch({}, 0);
        dialogs.AnswerNext(Utils::FromSystemPath(documents.Patch(chosen)));
        if (std::filesystem::exists(documents.Patch(chosen))) { // a system that knows both by one name
            EXPECT_NE(ReadText(documents.Patch("mine.kvp")), "kept");
            continue;
        }
        EXPECT_EQ(ReadText(documents.Patch("mine.kvp")), "kept") << chosen;
        ASSERT_EQ(dialogs.waiting.size(), 1u) << chosen;
        EXPECT_EQ(dialogs.questions.back().name, u"mine.kvp");
        dialogs.AnswerNext(Utils::FromSystemPath(documents.Patch("mine.kvp")));
        EXPECT_NE(ReadText(documents.Patch("mine.kvp")), "kept");
    }
}

TEST_F(DeviceState, ReplacesNoRoutingThatTheUserHasNotConfirmed) {
    dialogs.answersLater = true;
    WriteText(documents.Routing("5.1 (User).kvt"), "kept");
    own->SaveRouting({}, std::array<bool, SPanelState::Channels>{});
    dialogs.AnswerNext(Utils::FromSystemPath(documents.Routing("5.1 (User)")));
    EXPECT_EQ(ReadText(documents.Routing("5.1 (User).kvt")), "kept");
    ASSERT_EQ(dialogs.waiting.size(), 1u);
    EXPECT_EQ(dialogs.questions.back().name, u"5.1 (User).kvt");
    dialogs.AnswerNext({});
    EXPECT_EQ(ReadText(documents.Routing("5.1 (User).kvt")), "kept");
}

TEST_F(DeviceState, AsksOneQuestionAtATime) {
    dialogs.answersLater = true;
    const std::array<bool, SPanelState::Channels> on{};
    own->SavePatch({}, 0);
    EXPECT_FALSE(own->OpenPatch({}));
    EXPECT_FALSE(own->SavePatch({}, 0));
    own->SaveRouting({}, on);
    EXPECT_EQ(dialogs.questions.size(), 1u);
    EXPECT_TRUE(own->SavePatch(Utils::FromSystemPath(documents.Patch("given.kvp")), 0)) << "no question";
    dialogs.AnswerNext({});
    own->SaveRouting({}, on);
    EXPECT_EQ(dialogs.questions.size(), 2u);
    EXPECT_FALSE(own->OpenPatch({}));
    EXPECT_EQ(dialogs.questions.size(), 2u);
}

TEST_F(DeviceState, AsksNothingWithinATurn) {
    Write("a.kvp", "0.25");
    dialogs.answer = Utils::FromSystemPath(documents.Patch("a.kvp"));
    {
        const Utils::CTurn turn(own->Turns());
        EXPECT_FALSE(own->OpenPatch({})) << "not yet";
        EXPECT_TRUE(dialogs.questions.empty());
    }
    EXPECT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(Threshold(), 0.25f);
}

TEST_F(DeviceState, AnswersThatComeAfterItsEndDoNothing) {
    dialogs.answersLater = true;
    Write("a.kvp", "0.25");
    Device().SetParam(33, 0.75f, 0);
    const auto answer = [this](const std::filesystem::path& path) {
        own.reset();
        dialogs.AnswerNext(Utils::FromSystemPath(path));
        own = MakeOwn();
    };
    own->OpenPatch({});
    answer(documents.Patch("a.kvp"));
    own->SavePatch({}, 0);
    answer(documents.Patch("b.kvp"));
    own->SaveRouting({}, std::array<bool, SPanelState::Channels>{});
    answer(documents.Routing("b.kvt"));
    EXPECT_EQ(Threshold(), 0.75f);
    EXPECT_FALSE(std::filesystem::exists(documents.Patch("b.kvp")));
    EXPECT_FALSE(std::filesystem::exists(documents.Routing("b.kvt")));
    EXPECT_TRUE(listener.told.empty());
}

TEST_F(DeviceState, MayEndWhileABoxIsOpen) {
    Write("a.kvp", "0.25");
    WriteText(documents.Patch("foreign.kvp"), "<plugin_id>1</plugin_id>");
    Device().SetParam(33, 0.75f, 0);
    dialogs.whileOpen = [this] { own.reset(); };
    dialogs.answer = Utils::FromSystemPath(documents.Patch("a.kvp"));
    EXPECT_FALSE(own->OpenPatch({}));
    own = MakeOwn();
    EXPECT_FALSE(own->SavePatch({}, 0));
    own = MakeOwn();
    own->SaveRouting({}, std::array<bool, SPanelState::Channels>{});
    own = MakeOwn();
    EXPECT_FALSE(own->OpenPatch(Utils::FromSystemPath(documents.Patch("foreign.kvp"))));
    EXPECT_EQ(own, nullptr);
    own = MakeOwn();
    own->ChoosePatch(1, u"foreign");
    EXPECT_EQ(own, nullptr);
    EXPECT_EQ(dialogs.errors.size(), 2u);
    EXPECT_EQ(Threshold(), 0.75f);
}

// Lists that change after they were read

TEST_F(DeviceState, APatchKeepsItsPlaceWhenTheListChangesWhileItIsRead) {
    Write("a.kvp", "0.5");
    Write("b.kvp", "0.25");
    for (const bool byUser : {false, true}) {
        std::filesystem::remove(documents.Patch("0.kvp"));
        own = MakeOwn();
        CFaultyFiles files(1, CFaultyFiles::EFault::Fail); // whether there is b.fxp: no
        files.onFault = [&] { own->SavePatch(Utils::FromSystemPath(documents.Patch("0.kvp")), 0); };
        if (byUser) {
            own->ChoosePatch(1, u"b");
        } else {
            own->SelectPatch(1, false);
        }
        EXPECT_EQ(own->PatchNameAt(1), u"a") << "it was b's place";
        EXPECT_EQ(own->PatchName(), u"b");
        EXPECT_EQ(own->CurrentPatch(), 2);
        EXPECT_EQ(Threshold(), 0.25f);
    }
}

TEST_F(DeviceState, AChoiceFromAnOlderListMeansTheNameThatTheUserSaw) {
    for (const char* const name : {"a", "b"}) {
        Write(std::string(name) + ".kvp", name == std::string("a") ? "0.5" : "0.25");
        WriteText(documents.Routing(std::string(name) + ".kvt"),
            "<kav_input_routing>\r\n\t<name></name>\r\n\t<map>0,-1</map>\r\n</kav_input_routing>");
    }
    own = MakeOwn();
    own->SavePatch(Utils::FromSystemPath(documents.Patch("0.kvp")), 0);
    own->SaveRouting(
        Utils::FromSystemPath(documents.Routing("0.kvt")), std::array<bool, SPanelState::Channels>{});
    own->ChoosePatch(1, u"b"); // a's place by now
    EXPECT_EQ(own->PatchName(), u"b");
    EXPECT_EQ(own->CurrentPatch(), 2);
    EXPECT_EQ(Threshold(), 0.25f);
    own->ChooseRouting(1, u"b");
    EXPECT_EQ(own->RoutingName(), u"b");
    EXPECT_NE(own->GetRouting(0).find("<name>b</name>"), std::string::npos);
    own->ChoosePatch(1, u"gone");
    own->ChooseRouting(1, u"gone");
    EXPECT_EQ(own->PatchName(), u"b");
    EXPECT_EQ(own->RoutingName(), u"b");
    EXPECT_EQ(own->CurrentPatch(), 2);
}

// The widget shows the choice already, and goes back when it finds another generation.
TEST_F(DeviceState, APatchThatCannotBeTakenLeavesNameAndPlaceAndMovesTheGeneration) {
    Write("a.kvp", "0.5");
    Write("b.kvp", "0.25");
    Write("gone.kvp", "0.125");
    WriteText(documents.Patch("foreign.kvp"), "<plugin_id>1</plugin_id>");
    WriteText(documents.Patch("no patch.kvp"), "text <plugin_id>1936683628</plugin_id>");
    own = MakeOwn();
    std::filesystem::remove(documents.Patch("gone.kvp"));
    own->ChoosePatch(1, u"b");
    for (const auto& name : {std::u16string(u"foreign"), std::u16string(u"gone"), std::u16string(u"no patch"),
             std::u16string(u"never there")}) {
        const auto place = Panel([&](const SPanelState& panel) { return panel.patch.Find(-1, name); });
        EXPECT_TRUE(Moves([&] { own->ChoosePatch(place, name); })) << place;
        EXPECT_EQ(own->PatchName(), u"b");
        EXPECT_EQ(own->CurrentPatch(), 1);
        EXPECT_EQ(Panel([](const SPanelState& panel) { return panel.patch.Place(); }), 1);
        EXPECT_EQ(Threshold(), 0.25f);
    }
    EXPECT_EQ(dialogs.errors.size(), 1u) << "of the foreign one";
}

TEST_F(DeviceState, ShowsWhichSideIsLive) {
    const auto side = [this] { return Panel([](const SPanelState& panel) { return int{panel.side}; }); };
    EXPECT_EQ(side(), 1);
    EXPECT_TRUE(Moves([&] { own->SwitchAB(0); }));
    EXPECT_EQ(side(), 0);
    const auto text = own->PatchText(0xFF);
    own->ApplyPatchData(text.data(), text.size(), 0xFF);
    EXPECT_EQ(side(), 0) << "patches have no side";
    own->SwitchAB(1);
    EXPECT_EQ(side(), 1);
    EXPECT_FALSE(Moves([&] { own->SwitchAB(1); }));
}

// The editor's own thread

TEST_F(DeviceState, LeavesTheEditsOfAQuietThreadToTheHostsThreads) {
    const auto other = [](auto operation) { std::thread(operation).join(); };
    own->SetQuietThread(std::this_thread::get_id());
    own->SetParameter(33, 0.25f);
    EXPECT_EQ(listener.told, Told{});
    other([this] { own->PatchText(0); });
    EXPECT_EQ(listener.told, Told{}) << "a turn without an edit";
    other([this] { own->SetParameter(32, 0.5f); });
    EXPECT_EQ(listener.told, (Told{{4, 0.25f}, {0, 0.5f}}));
    own->SetParameter(33, 0.75f);
    own->TellHost(CHostQueue::EOccasion::Idle);
    ASSERT_EQ(listener.told.size(), 3u);
    own->SetQuietThread({});
    own->SetParameter(33, 0.125f);
    EXPECT_EQ(listener.told.size(), 4u) << "no thread is quiet any more";
}

TEST_F(DeviceState, TellsASilentHostDirectlyUntilItsFirstIdleCall) {
    own->SetQuietThread(std::this_thread::get_id());
    const auto call = own->DirectCall();
    EXPECT_TRUE(own->IsHostSilent());
    own->SetParameter(33, 0.25f);
    call();
    EXPECT_EQ(listener.told, (Told{{4, 0.25f}}));
    own->TellHost(CHostQueue::EOccasion::Idle);
    EXPECT_FALSE(own->IsHostSilent());
    own->SetParameter(33, 0.5f);
    call();
    EXPECT_EQ(listener.told.size(), 1u);
}

TEST_F(DeviceState, MayEndInsideADirectCall) {
    own->SetQuietThread(std::this_thread::get_id());
    own->SetParameter(33, 0.25f);
    own->SetParameter(32, 0.25f);
    const auto call = own->DirectCall();
    listener.answer = [this] { own.reset(); };
    call();
    EXPECT_EQ(listener.told.size(), 1u);
    call();
    EXPECT_EQ(listener.told.size(), 1u);
}

TEST_F(DeviceState, TakesNoTurnToTellTheHost) {
    own->SetQuietThread(std::this_thread::get_id());
    own->SetParameter(33, 0.25f);
    const Utils::CTurn turn(own->Turns());
    std::thread([this] { own->TellHost(CHostQueue::EOccasion::Idle); }).join(); // would wait for this turn
    EXPECT_EQ(listener.told.size(), 1u);
}

// The first size

TEST_F(DeviceState, BeginsWithAWidthOnlyWhereItHasNone) {
    const auto width = [this] { return Panel([](const SPanelState& panel) { return panel.width; }); };
    EXPECT_FALSE(own->HasSize());
    EXPECT_EQ(width(), 754);
    own->BeginWithWidth(1508);
    EXPECT_TRUE(own->HasSize());
    EXPECT_EQ(width(), 1508);
    own->BeginWithWidth(600);
    EXPECT_EQ(width(), 1508);
}

TEST_F(DeviceState, HasTheSizeOfAPatchThatNamesOne) {
    own->ReadPatch("<patch_format>textual</patch_format>\r\n<gui_width>700</gui_width>\r\n", 0);
    EXPECT_FALSE(own->HasSize()) << "not asked for";
    own->ReadPatch("<patch_format>textual</patch_format>\r\n", GuiWidth);
    EXPECT_FALSE(own->HasSize()) << "it names none";
    own->ReadPatch("<patch_format>textual</patch_format>\r\n<gui_width>700</gui_width>\r\n", GuiWidth);
    EXPECT_TRUE(own->HasSize());
    own->BeginWithWidth(1508);
    EXPECT_EQ(Panel([](const SPanelState& panel) { return panel.width; }), 700);
}
