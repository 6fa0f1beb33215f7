// Widgets of all classes, anywhere and of any size, and anything that a user, a host and the system can do to
// them.

#include "tests/gui/random_use.h"
#include "tests/support/abort_on_failure.h"

using namespace KAV::Tests;

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    AbortOnFailure();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CChance chance({data, size});
    const auto widgets = 1 + chance.Below(8);
    CRandomEditor editor(chance, widgets);
    editor.pictures.largestSide = 64;
    while (!editor.IsOver()) {
        UseAnyhow(editor);
        ExpectThatItMakesSense(editor);
        ForgetTheRecords(editor);
    }
    ExpectThatHistoryLeadsBack(editor);
    ExpectThatNothingIsLeft(editor);
    return 0;
}
