// A disk that takes no more, played by the limit on the size of files; its signal is ignored, so that the
// write fails as on a full disk.

#include "shell/wheel_document.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QFile>
#include <QTemporaryDir>
#include <csignal>

namespace {

TEST(FullDisk, LeavesTheOldFileWholeAndSaysSo) {
    const QTemporaryDir folder;
    WheelDocument document;
    document.path = folder.filePath("kola.json");
    document.wheels = {{"Litery", {EditorFunction()}}};
    ASSERT_TRUE(document.save(nullptr));
    QFile file(document.path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();

    for (int i = 0; i < 1000; ++i)
        document.wheels[0].actions.append(EditorFunction());
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full{4096, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    QString error;
    const bool isSaved = document.save(&error);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);

    EXPECT_FALSE(isSaved);
    EXPECT_EQ(error, "Nie można zapisać pliku " + document.path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), before);
    EXPECT_TRUE(document.save(nullptr)); // once there is room
}

} // namespace
