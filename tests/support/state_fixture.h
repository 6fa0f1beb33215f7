#pragma once

#include "device_gui/xxx_gui.h"
#include "patch/patch_files.h"
#include "patch/patch_flags.h"
#include "patch/routing_files.h"
#include "tests/support/file_text.h"
#include "tests/support/plain_patch.h"
#include "tests/support/recording_host.h"
#include "tests/support/scratch_home.h"
#include "utils/dialogs.h"
#include "utils/path.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// A user's documents, empty at first, instead of the real ones for the object's lifetime.
class CUserDocuments final {
public:
    CUserDocuments() {
        std::filesystem::remove_all(_folder);
        Utils::UseDocumentsFolder(Utils::FromSystemPath(_folder) + u"/");
    }
    ~CUserDocuments() { Utils::UseDocumentsFolder(std::nullopt); }
    CUserDocuments(const CUserDocuments&) = delete;
    CUserDocuments& operator=(const CUserDocuments&) = delete;

    /// `file` in UTF-8.
    std::filesystem::path Patch(const std::string& file) const {
        return _folder / "Kavelin" / "KAV Sorrel Limiter" / Name(file);
    }
    std::filesystem::path Routing(const std::string& file) const {
        return _folder / "Kavelin" / "Routings" / Name(file);
    }

private:
    static std::filesystem::path Name(const std::string& utf8) {
        return std::u8string(utf8.begin(), utf8.end());
    }

    std::filesystem::path _folder = ScratchFolder() / "documents";
};

/// Dialogs that answer as the test says, at once or later, and record their questions and errors.
class CAnsweringDialogs final : public Utils::IDialogs {
public:
    CAnsweringDialogs() { Utils::UseDialogs(this); }
    ~CAnsweringDialogs() { Utils::UseDialogs(nullptr); }

    void OpenFile(const Utils::SFileQuestion& question, Utils::PathAnswer answered) noexcept override {
        Ask(question, std::move(answered));
    }
    void SaveFile(const Utils::SFileQuestion& question, Utils::PathAnswer answered) noexcept override {
        Ask(question, std::move(answered));
    }
    /// Answers the oldest question that still waits.
    void AnswerNext(std::u16string_view path) {
        ASSERT_FALSE(waiting.empty());
        const auto answered = std::move(waiting.front());
        waiting.erase(waiting.begin());
        answered(path);
    }
    void ShowError(std::u16string_view title, std::u16string_view text) noexcept override {
        errors.push_back(std::u16string(title) + u": " + std::u16string(text));
        if (whileOpen) whileOpen();
    }
    bool ErrorsWait() const noexcept override { return errorsWait; }

    std::u16string answer;     ///< to every question; empty: cancelled
    bool answersLater = false; ///< by AnswerNext()
    std::vector<Utils::PathAnswer> waiting;
    std::function<void()> whileOpen; ///< runs in each box, before it is answered or closed
    std::vector<Utils::SFileQuestion> questions;
    std::vector<std::u16string> errors; ///< "title: text"
    bool errorsWait = false;            ///< as on Windows, for errors that a user would have to close

private:
    void Ask(const Utils::SFileQuestion& question, Utils::PathAnswer answered) {
        questions.push_back(question);
        if (whileOpen) whileOpen();
        if (answersLater) {
            waiting.push_back(std::move(answered));
        } else {
            answered(answer);
        }
    }
};

/// An instance of a user without patches and routings; Renew() creates another one.
class State : public testing::Test {
protected:
    CUserDocuments documents;
    CAnsweringDialogs dialogs;
    CRecordingHost host;
    std::unique_ptr<CHostedEffect> effect = std::make_unique<CHostedEffect>(host.Callback());

    CDeviceDSP& Device() { return effect->Device(); }
    CXXXGUI& Gui() { return effect->Device().GUI(); }
    /// Creates a new instance, which finds the user's files as they are now.
    void Renew() {
        effect.reset();
        effect = std::make_unique<CHostedEffect>(host.Callback());
    }
    /// Reads a text according to `flags`. The opening that distinguishes a text from other data is prepended.
    bool Read(const std::string& lines, std::uint32_t flags = 0) {
        const auto text = "<patch_format>textual</patch_format>\r\n" + lines;
        return Gui().ApplyPatchData(text.data(), text.size(), flags);
    }
    /// The host's chunk without its zero.
    std::string Chunk(bool isPreset) {
        void* data = nullptr;
        const auto size = effect->Dispatch(VST::effGetChunk, isPreset ? 1 : 0, 0, &data);
        if (size <= 0) return {};
        const std::string chunk(static_cast<const char*>(data), static_cast<std::size_t>(size));
        EXPECT_EQ(chunk.back(), '\0');
        return chunk.substr(0, chunk.size() - 1);
    }
    bool SetChunk(std::string chunk, bool isPreset) {
        return effect->Dispatch(VST::effSetChunk, isPreset ? 1 : 0,
                   static_cast<std::intptr_t>(chunk.size() + 1), chunk.data()) == 1;
    }
    template<typename TWidget>
    TWidget& Widget(std::size_t place = 0) {
        return *Gui().FindAll<TWidget>().at(place);
    }
};

} // namespace KAV::Tests
