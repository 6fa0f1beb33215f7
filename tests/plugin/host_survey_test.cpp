#include "plugin/host_survey.h"
#include "tests/support/file_text.h"
#include "tests/support/recording_host.h"
#include "utils/path.h"
#include "utils/session_log.h"
#include "utils/text.h"

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

namespace {

std::string Log() {
    return ReadText(Utils::ToSystemPath(Utils::LogPath()));
}

} // namespace

TEST(LogHostSurvey, WritesFourLinesInOrder) {
    Utils::LogLine(u"before"); // the log is shared by the process, in which other tests may have run
    const auto before = Log().size();
    LogHostSurvey({"M\xC3\xA4ker", "Studio", "2.3.0.0", "sendVstEvents;sizeWindow;"});
    const auto folder = Utils::ToUtf8(Utils::GetFolder(Utils::GetModulePath()));
    EXPECT_EQ(folder.back(), '/');
    const auto log = Log();
    ASSERT_GT(before, 0u);
    EXPECT_EQ(log.substr(before),
        "AudioHost=M\xC3\xA4ker Studio v2.3.0.0\r\nAudioHostCanDo=sendVstEvents;sizeWindow;\r\nPluginPath=" +
            folder + "\r\nPluginFormat=VST 2.4\r\n");
}

TEST(LogHostSurvey, LeavesOutWhatTheHostDoesNotTell) {
    LogHostSurvey({"", "Studio", "0", ""});
    LogHostSurvey({"", "", "1.0", ""});
    LogHostSurvey({"Maker", "", "1.0", ""});
    const auto log = Log();
    EXPECT_NE(log.find("\r\nAudioHost=Studio v0\r\nAudioHostCanDo=\r\n"), std::string::npos) << log;
    EXPECT_NE(log.find("\r\nAudioHost=Maker  v1.0\r\n"), std::string::npos) << log;
    EXPECT_EQ(log.find("AudioHost= v1.0"), std::string::npos) << log;
}

TEST(LogHostSurvey, IsWrittenByANewInstance) {
    CRecordingHost host;
    CHostedEffect effect(host.Callback());
    EXPECT_NE(Log().find("AudioHostCanDo="), std::string::npos);
}
