#include "common/files.h"
#include "shell/wheel_document.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#ifndef _WIN32
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#endif

namespace {

class WheelDocumentTest : public testing::Test {
protected:
    QString fileWith(const QByteArray& text) {
        const QString path = folder.filePath("kola.json");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }

    static QByteArray bytesOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
    }

    /// What a file becomes by being opened and saved.
    QJsonObject saved(const QByteArray& text) {
        WheelDocument document;
        QString error;
        EXPECT_TRUE(document.load(fileWith(text), &error)) << error.toStdString();
        EXPECT_TRUE(document.save(&error)) << error.toStdString();
        return QJsonDocument::fromJson(bytesOf(document.path)).object();
    }

    static QJsonObject json(const QByteArray& text) { return QJsonDocument::fromJson(text).object(); }

    QTemporaryDir folder;
};

TEST_F(WheelDocumentTest, SavesWhatItUnderstoodOfAFile) {
    const std::pair<QByteArray, QByteArray> cases[] = {
        {R"({"actions":[]})", R"({"actions":[]})"},
        {R"({"wheels":[]})", R"({"wheels":[{"name":"Koło 1","actions":[]}]})"},
        {R"({"wheels":5,"actions":[{"key":"a"}]})",
         R"({"actions":[{"name":"","steps":[{"action":"click","key":"a","value":1}]}]})"},
        {R"({"wheels":[{"name":"x"},7]})",
         R"({"wheels":[{"name":"x","actions":[]},{"name":"","actions":[]}]})"},
        {R"({"actions":[{"name":"f","keys":["a",5,5.7,"",true],"mystery":1}]})",
         R"({"actions":[{"name":"f","steps":[{"action":"click","key":"a","value":1},
            {"action":"click","key":"5","value":1},{"action":"click","key":"0","value":1}]}]})"},
        {R"({"actions":[{"steps":"x","key":"b"}]})",
         R"({"actions":[{"name":"","steps":[{"action":"click","key":"b","value":1}]}]})"},
        {R"({"actions":[{"name":"f","delay":30,"color":"red","icon":"icons/a.png","voice":"głos"}]})",
         R"({"actions":[{"name":"f","color":"#FF0000","icon":"icons/a.png","voice":"głos","steps":[]}]})"},
        {R"({"actions":[{"delay":31,"color":"nonsense"},{"delay":9000},{"delay":"7"}]})",
         R"({"actions":[{"name":"","delay":31,"steps":[]},{"name":"","delay":9000,"steps":[]},
            {"name":"","steps":[]}]})"},
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
    for (const auto& [opened, expected] : cases)
        EXPECT_EQ(saved(opened), json(expected)) << opened.toStdString();
}

TEST_F(WheelDocumentTest, RefusesAFileWithAReasonAndOnlyThen) {
    const std::pair<QByteArray, QString> cases[] = {
        {"", "Błąd JSON: "},
        {"[1,2]", "Błąd JSON: "},
        {"{\"wheels\":[],}", "Błąd JSON: "},
        {"{\"wheels\":5}", "Plik nie zawiera \"wheels\" ani \"actions\""},
        {"{}", "Plik nie zawiera \"wheels\" ani \"actions\""},
    };
    WheelDocument document;
    QString error;
    for (const auto& [text, beginning] : cases) {
        EXPECT_FALSE(document.load(fileWith(text), &error)) << text.toStdString();
        EXPECT_TRUE(error.startsWith(beginning)) << error.toStdString();
        EXPECT_FALSE(document.load(folder.filePath("kola.json"), nullptr));
    }
    const QString tooLong = folder.filePath("za długi.json");
    EXPECT_TRUE(QFile(fileWith("{")).rename(tooLong) && QFile::resize(tooLong, longestFileBytes + 1));
    QStringList unreadable{folder.filePath("nie ma.json"), folder.path(), tooLong};
#ifndef _WIN32
    unreadable.append(folder.filePath("potok"));
    EXPECT_EQ(mkfifo(QFile::encodeName(unreadable.last()).constData(), 0600), 0);
#endif
    for (const QString& path : unreadable) {
        EXPECT_FALSE(document.load(path, &error));
        EXPECT_EQ(error, "Nie można otworzyć pliku " + path);
    }
}

TEST_F(WheelDocumentTest, KeepsTheOldFileWhenItCannotBeReplaced) {
    WheelDocument document;
    ASSERT_TRUE(document.load(fileWith(R"({"actions":[]})"), nullptr));
    const QString nowhere = folder.filePath("nie ma/kola.json");
    QString error;
    EXPECT_FALSE(document.saveAs(nowhere, &error));
    EXPECT_EQ(error, "Nie można zapisać pliku " + nowhere);
    EXPECT_EQ(document.path, nowhere);

    document.path = fileWith("old");
    ASSERT_TRUE(QFile::setPermissions(document.path, QFile::ReadOwner));
    if (!QFileInfo(document.path).isWritable()) { // the superuser may write everything
        EXPECT_FALSE(document.save(&error));
        EXPECT_EQ(bytesOf(document.path), "old");
    }
    QFile::setPermissions(document.path, QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_TRUE(document.save(&error));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList({"kola.json"}));
}

TEST_F(WheelDocumentTest, KeepsWhatAnotherProgramHasWrittenMeanwhile) {
    WheelDocument document;
    ASSERT_TRUE(document.load(fileWith(R"({"actions":[]})"), nullptr));
    const QString copy = folder.filePath("kola-kopia-1.json");
    const struct {
        QByteArray foreign; // null: nobody writes
        QString copy;
    } saves[] = {
        {{}, ""}, {"first", copy}, {{}, ""}, {"second", folder.filePath("kola-kopia-2.json")}, {"", ""},
    };
    for (const auto& each : saves) {
        if (!each.foreign.isNull())
            fileWith(each.foreign);
        ASSERT_TRUE(document.save(nullptr));
        EXPECT_EQ(document.keptCopy, each.copy);
        EXPECT_EQ(QJsonDocument::fromJson(bytesOf(document.path)).object(), json(R"({"actions":[]})"));
        if (!each.copy.isEmpty()) {
            EXPECT_EQ(bytesOf(each.copy), each.foreign);
        }
    }
    ASSERT_TRUE(QFile::remove(document.path)); // nothing there to keep
    ASSERT_TRUE(document.save(nullptr));
    EXPECT_EQ(document.keptCopy, "");
}

#ifndef _WIN32
/// The limit on the size of files plays the disk; its signal is ignored, so that the write fails as there.
TEST_F(WheelDocumentTest, AFullDiskLeavesTheOldFileWholeAndSaysSo) {
    WheelDocument document;
    ASSERT_TRUE(document.load(fileWith(R"({"actions":[]})"), nullptr));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const int functions : {1, 1000}) { // within one buffer, and beyond
        document.wheels[0].actions.resize(functions);
        const rlimit full{20, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        QString error;
        const bool isSaved = document.save(&error);
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_FALSE(isSaved) << functions;
        EXPECT_EQ(error, "Nie można zapisać pliku " + document.path);
        EXPECT_EQ(bytesOf(document.path), R"({"actions":[]})");
    }
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList({"kola.json"}));
    EXPECT_TRUE(document.save(nullptr)); // once there is room
}
#endif

TEST(DescribeStep, TellsAStepInOneLine) {
    using enum EditorStepKind;
    const std::pair<EditorStep, QString> cases[] = {
        {{Click, "a", 1, {}}, "klik:  a"},
        {{Click, "%1", 0, {}}, "klik:  %1"},
        {{Click, "%1", 3, {}}, "klik ×3:  %1"},
        {{Hold, "alt", 0, {}}, "przytrzymaj (bez puszczania):  alt"},
        {{Hold, "alt", 1500, {}}, "przytrzymaj 1500 ms:  alt"},
        {{Release, "alt", 1, {}}, "puść:  alt"},
        {{Open, {}, 1, "https://x"}, "otwórz:  https://x"},
        {{static_cast<EditorStepKind>(9), "a", 1, {}}, ""},
    };
    for (const auto& [step, text] : cases)
        EXPECT_EQ(describeStep(step), text);
}

} // namespace
