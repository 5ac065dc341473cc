#include "shell/voice_page.h"
#include "shell/wheels/field_icons.h"
#include "shell/wheels/icon_picker_dialog.h"
#include "shell/wheels/wheel_document.h"
#include "shell/wheels/wheel_recovery.h"
#include "test_files.h"

#include <gtest/gtest.h>

namespace {

class Files : public testing::Test {
protected:
    void TearDown() override { QFile::remove(config); }

    WheelDocument opened(const QByteArray& text) {
        writeFile(path, text);
        WheelDocument document;
        EXPECT_TRUE(document.load(path, nullptr)) << text.toStdString();
        return document;
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath("kola.json");
    const QString config = QCoreApplication::applicationDirPath() + "/config.json";
};

TEST_F(Files, KeepEverythingParsedWhenSaved) {
    const std::pair<QByteArray, QByteArray> cases[] = {
        {R"({"wheels":5,"actions":[{"name":"f","keys":["a",5,5.7,"",true],"unknown":1}]})",
         R"({"actions":[{"name":"f","steps":[{"action":"click","key":"a","value":1},
            {"action":"click","key":"5","value":1},{"action":"click","key":"0","value":1}]}]})"},
        {R"({"actions":[{"name":"f","delay":30,"color":"red","icon":"icons/a.png","voice":"głos"},
            {"delay":31,"color":"nonsense"},{"delay":9000},{"delay":"7","steps":"x","key":"b"}]})",
         R"({"actions":[{"name":"f","color":"#FF0000","icon":"icons/a.png","voice":"głos","steps":[]},
            {"name":"","delay":31,"steps":[]},{"name":"","delay":9000,"steps":[]},
            {"name":"","steps":[{"action":"click","key":"b","value":1}]}]})"},
        {R"({"actions":[{"steps":[{"key":"a","action":"click","value":500},{"key":"a","value":0},
            {"key":"a","action":"HOLD","value":7},{"key":"a","action":"hold"},
            {"key":"a","action":"przytrzymaj","value":70000},{"key":"a","action":"puść","value":9},
            {"open":5,"key":"a"},{"open":"x"},3]}]})",
         R"({"actions":[{"name":"","steps":[{"action":"click","key":"a","value":100},
            {"action":"click","key":"a","value":1},{"action":"click","key":"a","value":7},
            {"action":"hold","key":"a","value":0},{"action":"hold","key":"a","value":70000},
            {"action":"release","key":"a"},{"open":""},{"open":"x"},
            {"action":"click","key":"","value":1}]}]})"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_TRUE(opened(text).save(nullptr));
        EXPECT_EQ(json(bytesOf(path)), json(expected)) << text.toStdString();
    }
}

/// An icon of the user's own hides the program's of the same name.
TEST_F(Files, OwnIconsAreOfferedBesideThoseOfTheProgram) {
    const QStringList folders{folder.filePath("own"), folder.filePath("program")};
    for (const char* const icon :
         {"own/icons/b.png", "own/icons/d.png", "program/icons/a.png", "program/icons/b.png"}) {
        QDir(folder.path()).mkpath(QFileInfo(icon).path());
        writeFile(folder.filePath(icon), "");
    }
    const IconPickerDialog picker(folders);
    QStringList offered;
    for (int row = 0; row < picker.findChild<QListWidget*>()->count(); ++row)
        offered += picker.findChild<QListWidget*>()->item(row)->text();
    EXPECT_EQ(offered.join(' '), "(bez ikony) a b d");
    EXPECT_EQ(iconFile(folders, "icons/a.png"), folder.filePath("program/icons/a.png"));
    EXPECT_EQ(iconFile(folders, "icons/b.png"), folder.filePath("own/icons/b.png"));
}

TEST_F(Files, ChangedByAnotherProgramAreBackedUpBeforeSaving) {
    WheelDocument document = opened(R"({"actions":[]})");
    for (const QByteArray change : {"", "first", "second"}) {
        writeFile(path, change);
        EXPECT_TRUE(document.save(nullptr));
        EXPECT_EQ(bytesOf(document.backupPath), change);
        EXPECT_EQ(json(bytesOf(path)), json(R"({"actions":[]})"));
        EXPECT_TRUE(document.save(nullptr) && document.backupPath.isEmpty());
    }
    EXPECT_FALSE(document.saveAs(folder.filePath("nie ma/kola.json"), nullptr));
}

TEST_F(Files, KeepUnsavedChangesUntilTheyAreSavedOrEqualTheFile) {
    const QString kept = folder.filePath("kola-odzysk.json");
    writeFile(kept, R"({"wheels":[]})"); // the user's own, and so not replaced without a copy
    WheelDocument document = opened(R"({"actions":[{"name":"a"}]})");
    const WheelDocument saved = document;
    EXPECT_FALSE(WheelRecovery::find(document));
    WheelRecovery recovery;
    document.wheels.append(EditorWheel{"nowe", {}});
    document.multiWheel = true;
    recovery.keep(document);
    recovery.flush();
    EXPECT_EQ(bytesOf(folder.filePath("kola-odzysk-kopia-1.json")), R"({"wheels":[]})");
    const auto found = WheelRecovery::find(saved);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->wheels, document.wheels);
    EXPECT_TRUE(found->multiWheel && !found->fileHasChanged);
    EXPECT_TRUE(WheelRecovery::find(opened(R"({"actions":[]})"))->fileHasChanged);
    recovery.leave();
    recovery.remove(); // no longer this run's
    recovery.keep(document);
    recovery.flush(); // and so not overwritten
    EXPECT_TRUE(WheelRecovery::find(saved));
    EXPECT_EQ(json(bytesOf(folder.filePath("kola-odzysk-kopia-2.json"))), json(bytesOf(kept)));
    EXPECT_EQ(recovery.setAside(*found), folder.filePath("kola-odzysk-kopia-3.json"));
    EXPECT_FALSE(WheelRecovery::find(saved));
    QFile::rename(folder.filePath("kola-odzysk-kopia-3.json"), kept);
    EXPECT_TRUE(document.save(nullptr));
    EXPECT_FALSE(WheelRecovery::find(document) || QFile::exists(kept));

    // Where no file can be created beside the wheel file (here a folder has its name) the data folder serves.
    EXPECT_TRUE(QDir().mkdir(kept));
    document.wheels.removeLast();
    recovery.keep(document);
    recovery.flush();
    const QByteArray newer = bytesOf(WheelRecovery::find(opened(R"({"actions":[]})"))->path);
    EXPECT_TRUE(QDir().rmdir(kept));
    writeFile(kept, newer + "\n");
    QFile older(kept);
    EXPECT_TRUE(older.open(QIODevice::ReadWrite) &&
                older.setFileTime(QDateTime::currentDateTime().addDays(-1), QFile::FileModificationTime));
    older.close(); // Windows does not rename an open file
    const auto newest = WheelRecovery::find(opened(R"({"actions":[]})"));
    EXPECT_EQ(bytesOf(newest->path), newer);
    EXPECT_EQ(bytesOf(newest->olderCopy), newer + "\n");
    recovery.remove();
    recovery.flush();
    EXPECT_FALSE(WheelRecovery::find(opened(R"({"actions":[]})")));
}

/// What Qt cannot parse is backed up; what the engine's parser accepts nevertheless is converted as well.
TEST_F(Files, OfSettingsLoseNothingWhenACheckBoxIsToggled) {
    const std::pair<QByteArray, QByteArray> cases[] = {
        {R"({"toggleKey":"F9","new":[null]})", R"({"toggleKey":"F9","new":[null]})"},
        {"{\"toggleKey\":\"F9", "{}"},
        {"[1]", "{}"},
        {R"({"sendDelay":+5,"keyHold":007,"x":[-.5,1.,1e,--5,1-2,1e999,true]})",
         R"({"sendDelay":5,"keyHold":7,"x":[-0.5,1,1,0,1,1e300,true]})"},
        {"{\"voiceModel\":\"a\tb\\u12G4\",\"toggleKey\":\"\\\"\\n\\u0107\"}",
         R"({"voiceModel":"a\tb\u0012","toggleKey":"\"\nć"})"},
    };
    const QString copy = QCoreApplication::applicationDirPath() + "/config-kopia-1.json";
    for (const auto& [text, kept] : cases) {
        writeFile(config, text);
        const VoicePage page({});
        page.findChild<QCheckBox*>()->click(); // "voiceEnabled"
        QJsonObject expected = json(kept);
        expected["voiceEnabled"] = false;
        expected["voiceGlobal"] = true;
        EXPECT_EQ(json(bytesOf(config)), expected) << text.toStdString();
        EXPECT_EQ(bytesOf(copy), json(text).isEmpty() ? text : QByteArray());
        QFile::remove(copy);
    }
}

} // namespace
