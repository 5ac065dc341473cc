#include "platform/launcher.h"

#include "platform/windows/windows_api.h"

namespace {

/// The programs that open a target may be started through COM, which each thread has to open for itself.
class ComApartment {
public:
    ComApartment() noexcept
        : opened(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() {
        if (opened) {
            CoUninitialize();
        }
    }

private:
    bool opened;
};

} // namespace

void openTarget(const std::u16string& target) {
    const ComApartment apartment;
    ShellExecuteW(nullptr, L"open", wideText(target), nullptr, nullptr, SW_SHOWNORMAL);
}
