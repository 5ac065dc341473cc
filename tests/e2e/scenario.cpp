#include "scenario.h"

#include <system_error>
#include <vector>

namespace e2e {

namespace {

std::filesystem::path artefact(const std::string& name) {
    return testArguments().artefacts / testArguments().target / name;
}

/// What the artefacts of this test's failure begin with.
std::string failureStem() {
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    return std::string("failed-") + info->test_suite_name() + "." + info->name();
}

} // namespace

Stage& Scenario::stage(const ScreenSetup& setup) {
    if (!made)
        made = std::make_unique<Stage>(setup);
    return *made;
}

void Scenario::keepPicture(const std::string& name) {
    made->screen.eyes().savePicture(artefact(name + ".png"));
}

// An earlier run's failure is no longer news.
void Scenario::SetUp() {
    const std::filesystem::path folder = artefact("");
    if (!std::filesystem::exists(folder))
        return;
    std::vector<std::filesystem::path> old;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().filename().string().starts_with(failureStem() + "-"))
            old.push_back(entry.path());
    }
    for (const std::filesystem::path& file : old)
        std::filesystem::remove(file);
}

/// The screen's last picture, what the recorder got, what the program said and what its devices were told.
void Scenario::TearDown() {
    if (made && HasFailure()) {
        std::filesystem::create_directories(artefact(""));
        if (made->screen.isThere())
            made->screen.eyes().savePicture(artefact(failureStem() + "-screen.png"));
        const std::filesystem::path folder = made->screen.folder();
        std::vector<std::filesystem::path> kept{folder / "recorder.txt", folder / "program.log"};
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            for (const char* device : {"adapter", "speech", "gaze"})
                kept.push_back(entry.path() / (std::string(device) + "_log.txt"));
        }
        for (const std::filesystem::path& file : kept) {
            std::error_code failure;
            std::filesystem::copy_file(file, artefact(failureStem() + "-" + file.filename().string()),
                                       std::filesystem::copy_options::overwrite_existing, failure);
        }
    }
    made.reset();
}

} // namespace e2e
