// One file format, two readers: what the shell writes, the engine reads.

#include "files/wheel_files.h"
#include "files/wheel_writer.h"
#include "shell/wheel_document.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace {

class RoundTripTest : public testing::Test {
protected:
    static std::vector<Wheel> engineReads(const WheelDocument& document) {
        std::vector<Wheel> wheels;
        std::u16string problems;
        loadWheelFile(document.path.toStdU16String(), wheels, problems);
        EXPECT_EQ(problems, u"");
        return wheels;
    }

    /// A document of one wheel with one function of these steps, saved.
    WheelDocument savedWith(const QList<EditorStep>& steps) const {
        WheelDocument document;
        document.path = folder.filePath("kola.json");
        EditorFunction function;
        function.name = "f";
        function.steps = steps;
        document.wheels = {{"Koło", {function}}};
        EXPECT_TRUE(document.save(nullptr));
        return document;
    }

    QTemporaryDir folder;
};

using enum EditorStepKind;

TEST_F(RoundTripTest, TheEngineUnderstandsAllThatTheEditorCanSay) {
    WheelDocument document = savedWith({{Click, "F5", 3, {}},
                                        {Hold, "ctrl", 1500, {}},
                                        {Release, "ctrl", 1, {}},
                                        {Open, {}, 1, "https://ą"}});
    EditorFunction& function = document.wheels[0].actions[0];
    function.name = "Zażółć \"gęślą\"\n🎮";
    function.color = "#E74C3C";
    function.icon = "icons/a.png";
    function.voice = "zażółć";
    function.delay = 50;
    ASSERT_TRUE(document.save(nullptr));

    const std::vector<Wheel> wheels = engineReads(document);
    ASSERT_EQ(wheels.size(), 1U);
    const WheelAction& action = wheels[0].actions[0];
    EXPECT_EQ(QString::fromStdU16String(action.name), function.name);
    EXPECT_EQ(action.color, 0x3C4CE7U);
    EXPECT_EQ(action.icon, u"icons/a.png");
    EXPECT_EQ(action.voice, u"zażółć");
    EXPECT_EQ(action.delay, 50);
    ASSERT_EQ(action.steps.size(), 4U);
    EXPECT_EQ(action.steps[0].value, 3);
    EXPECT_EQ(action.steps[1].kind, StepKind::hold);
    EXPECT_EQ(action.steps[2].kind, StepKind::release);
    EXPECT_EQ(action.steps[3].target, u"https://ą");
}

TEST_F(RoundTripTest, WhatTheEngineWritesComesBackFromTheEditorUnchanged) {
    WheelDocument document = savedWith({{Click, "a", 2, {}}, {Hold, "shift", 0, {}}, {Open, {}, 1, "x"}});
    const std::vector<Wheel> before = engineReads(document);
    const std::string canonical = serializeWheels(before);
    QFile file(document.path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(canonical.data(), static_cast<qint64>(canonical.size()));
    file.close();
    WheelDocument again;
    ASSERT_TRUE(again.load(document.path, nullptr));
    EXPECT_EQ(again.wheels, document.wheels);
    ASSERT_TRUE(again.save(nullptr));
    EXPECT_EQ(engineReads(again), before);
}

} // namespace
