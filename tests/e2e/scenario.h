#pragma once

#include "harness/stage.h"
#include "harness/waiting.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace e2e {

/// A scenario on a stage of its own. When it fails, what the screen showed last and what the recorder got are
/// kept with the artefacts.
class Scenario : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// The stage, made at the first call; `setup` counts only then.
    Stage& stage(const ScreenSetup& setup = {});
    /// Keeps a picture of the screen as an artefact.
    void keepPicture(const std::string& name);

private:
    std::unique_ptr<Stage> made;
};

} // namespace e2e
