#include "scenario.h"

#include <iostream>
#include <system_error>

namespace e2e {

namespace {

std::filesystem::path artefact(const std::string& name) {
    return testArguments().artefacts / testArguments().target / name;
}

std::string caseName() {
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    return std::string(info->test_suite_name()) + "." + info->name();
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

void Scenario::TearDown() {
    if (made && HasFailure()) {
        if (made->screen.isThere())
            keepPicture("failed-" + caseName());
        std::error_code failure;
        for (const char* log : {"recorder.txt", "program.log"}) {
            std::filesystem::copy_file(made->screen.folder() / log,
                                       artefact("failed-" + caseName() + "-" + log),
                                       std::filesystem::copy_options::overwrite_existing, failure);
        }
    }
    made.reset();
}

} // namespace e2e
