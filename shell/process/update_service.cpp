#include "shell/process/update_service.h"

#include "shell/process/update_library.h"

#include <QLibrary>
#include <optional>

namespace {

#ifdef ROTIKA_UPDATE_FEED
constexpr char updateFeed[] = ROTIKA_UPDATE_FEED;
#else
constexpr char updateFeed[] = "";
#endif

struct UpdateFunctions {
    void (*setAppcastUrl)(const char*);
    void (*setAppDetails)(const wchar_t* company, const wchar_t* application, const wchar_t* version);
    void (*setShutdownRequestCallback)(void (*)());
    void (*setAutomaticCheckForUpdates)(int);
    void (*init)();
    void (*cleanup)();
    void (*checkUpdateWithUi)();
};

template <typename Function>
bool resolve(QLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.resolve(name));
    return function != nullptr;
}

std::optional<UpdateFunctions> bindUpdateLibrary() {
    const QString name = updateLibraryName();
    if (name.isEmpty() || *updateFeed == '\0')
        return std::nullopt;
    QLibrary library(name);
    // The key is a resource of the program. A library that is too old to know such keys would accept any
    // file.
    if (library.resolve("win_sparkle_set_eddsa_public_key") == nullptr)
        return std::nullopt;
    UpdateFunctions functions{};
    const bool complete =
        resolve(library, "win_sparkle_set_appcast_url", functions.setAppcastUrl) &&
        resolve(library, "win_sparkle_set_app_details", functions.setAppDetails) &&
        resolve(library, "win_sparkle_set_shutdown_request_callback", functions.setShutdownRequestCallback) &&
        resolve(library, "win_sparkle_set_automatic_check_for_updates",
                functions.setAutomaticCheckForUpdates) &&
        resolve(library, "win_sparkle_init", functions.init) &&
        resolve(library, "win_sparkle_cleanup", functions.cleanup) &&
        resolve(library, "win_sparkle_check_update_with_ui", functions.checkUpdateWithUi);
    return complete ? std::optional(functions) : std::nullopt;
}

const std::optional<UpdateFunctions>& updateFunctions() {
    static const std::optional<UpdateFunctions> functions = bindUpdateLibrary();
    return functions;
}

} // namespace

bool updateServiceAvailable() {
    return updateFunctions().has_value();
}

void startUpdateService(void (*onShutdownRequest)()) {
    const auto& functions = updateFunctions();
    if (!functions)
        return;
    functions->setAppcastUrl(updateFeed);
    functions->setAppDetails(L"Rotika", L"Rotika", QStringLiteral(ROTIKA_VERSION).toStdWString().c_str());
    functions->setShutdownRequestCallback(onShutdownRequest);
    functions->setAutomaticCheckForUpdates(1);
    functions->init();
}

void stopUpdateService() {
    if (updateFunctions())
        updateFunctions()->cleanup();
}

void checkForUpdatesWithUi() {
    if (updateFunctions())
        updateFunctions()->checkUpdateWithUi();
}
