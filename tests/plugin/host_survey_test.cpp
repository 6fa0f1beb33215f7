#include "plugin/host_survey.h"
#include "tests/support/recording_host.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Tests;

TEST(FormatVendorVersion, PutsPointsBetweenTheDigits) {
    EXPECT_EQ(FormatVendorVersion(3210), "3.2.1.0");
    EXPECT_EQ(FormatVendorVersion(210), "2.1.0");
    EXPECT_EQ(FormatVendorVersion(7), "7");
}

TEST(FormatVendorVersion, LosesHigherDigitsAndThenLeadingZeros) {
    EXPECT_EQ(FormatVendorVersion(43210), "3.2.1.0");
    EXPECT_EQ(FormatVendorVersion(40210), "2.1.0");
    EXPECT_EQ(FormatVendorVersion(10000), "0");
}

TEST(FormatVendorVersion, ZeroAndNegativeNumbersAreZero) {
    EXPECT_EQ(FormatVendorVersion(0), "0");
    EXPECT_EQ(FormatVendorVersion(-5), "0");
    EXPECT_EQ(FormatVendorVersion(INTPTR_MIN), "0");
}

TEST(HostSurvey, AsksTheHostInOrderAndKeepsWhatItCanDo) {
    CRecordingHost host;
    host.answer = [](VST::AEffect*, std::int32_t opcode, std::int32_t, void* pointer,
                      float) -> std::intptr_t {
        auto* const text = static_cast<char*>(pointer);
        if (opcode == VST::audioMasterGetVendorString) std::strcpy(text, "Maker");
        if (opcode == VST::audioMasterGetProductString) std::strcpy(text, "Studio");
        if (opcode == VST::audioMasterGetVendorVersion) return 2300;
        if (opcode == VST::audioMasterCanDo) {
            const std::string question = text;
            return question == "sizeWindow" ? 1 : question == "sendVstEvents" ? -1 : 0;
        }
        return 0;
    };
    CHostedEffect effect(host.Callback());
    const SHostSurvey& survey = effect.Device().HostSurvey();
    EXPECT_EQ(survey.vendor, "Maker");
    EXPECT_EQ(survey.product, "Studio");
    EXPECT_EQ(survey.version, "2.3.0.0");
    EXPECT_EQ(survey.canDo, "sendVstEvents;sizeWindow;");

    ASSERT_GE(host.calls.size(), 17u);
    EXPECT_EQ(host.calls[0].opcode, VST::audioMasterGetVendorString);
    EXPECT_EQ(host.calls[1].opcode, VST::audioMasterGetProductString);
    EXPECT_EQ(host.calls[2].opcode, VST::audioMasterGetVendorVersion);
    const std::vector<std::string> questions{"sendVstEvents", "sendVstMidiEvent", "sendVstTimeInfo",
        "receiveVstEvents", "receiveVstMidiEvent", "reportConnectionChanges", "acceptIOChanges", "sizeWindow",
        "offline", "openFileSelector", "closeFileSelector", "startStopProcess", "shellCategory",
        "sendVstMidiEventFlagIsRealtime"};
    for (std::size_t i = 0; i < questions.size(); ++i) EXPECT_EQ(host.calls[3 + i].text, questions[i]);
}

TEST(HostSurvey, SilentHostGivesEmptyTexts) {
    CRecordingHost host;
    CHostedEffect effect(host.Callback());
    EXPECT_EQ(effect.Device().HostSurvey().vendor, "");
    EXPECT_EQ(effect.Device().HostSurvey().product, "");
    EXPECT_EQ(effect.Device().HostSurvey().canDo, "");
}
