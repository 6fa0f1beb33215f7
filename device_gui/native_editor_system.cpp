#include "device_gui/editor_system.h"

namespace KAV {

namespace {

class CNativeEditorSystem final : public IEditorSystem {
public:
    bool IsAvailable() const noexcept override { return Native::CNativeWindow::IsAvailable(); }
    GUI::SSurroundings Surroundings() noexcept override { return {&_iWindow, &_iPictures}; }
    std::int32_t FirstWidth(std::int32_t a_nWidth) noexcept override {
        return Native::CNativeWindow::FirstWidth(a_nWidth);
    }
    std::u16string BeginPictures() override { return _iPictures.Begin(); }
    void EndPictures() noexcept override { _iPictures.End(); }
    void Prepare(std::span<const Native::SPictureWish> a_vsWishes) noexcept override {
        _iPictures.Prepare(a_vsWishes);
    }
    bool Open(void* a_pParent, std::int32_t a_nWidth, std::int32_t a_nHeight,
        Native::IEditor& a_piEditor) override {
        return _iWindow.Open(a_pParent, a_nWidth, a_nHeight, a_piEditor);
    }
    void Close() noexcept override { _iWindow.Close(); }
    bool CallOut(const std::function<void()>& a_piCall) noexcept override {
        return _iWindow.CallOut(a_piCall);
    }
    void ResizeParent(std::int32_t a_nWidth, std::int32_t a_nHeight) noexcept override {
        _iWindow.ResizeParent(a_nWidth, a_nHeight);
    }

private:
    Native::CNativePictures _iPictures;
    Native::CNativeWindow _iWindow;
};

} // namespace

std::unique_ptr<IEditorSystem> MakeEditorSystem() {
    return std::make_unique<CNativeEditorSystem>();
}

} // namespace KAV
