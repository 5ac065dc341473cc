#include "scenario.h"

#include <array>
#include <system_error>

namespace e2e {

namespace {

std::filesystem::path artefact(const std::string& name) {
    return testArguments().artefacts / testArguments().target / name;
}

/// The screen's last picture, what the recorder got and what the program said.
std::array<std::string, 3> failureArtefacts() {
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    const std::string stem = std::string("failed-") + info->test_suite_name() + "." + info->name();
    return {stem + ".png", stem + "-recorder.txt", stem + "-program.log"};
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
    for (const std::string& name : failureArtefacts())
        std::filesystem::remove(artefact(name));
}

void Scenario::TearDown() {
    if (made && HasFailure()) {
        const auto [picture, received, said] = failureArtefacts();
        std::filesystem::create_directories(artefact(picture).parent_path());
        if (made->screen.isThere())
            made->screen.eyes().savePicture(artefact(picture));
        std::error_code failure;
        const auto replacing = std::filesystem::copy_options::overwrite_existing;
        std::filesystem::copy_file(made->screen.folder() / "recorder.txt", artefact(received), replacing,
                                   failure);
        std::filesystem::copy_file(made->screen.folder() / "program.log", artefact(said), replacing, failure);
    }
    made.reset();
}

} // namespace e2e
