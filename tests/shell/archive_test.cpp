#include "shell/voice_install/archive_extractor.h"
#include "shell/voice_install/file_placement.h"
#include "shell/voice_install/speech_library_file.h"
#include "shell/voice_install/speech_package.h"
#include "test_files.h"

#include <array>

namespace {

/// An entry of a zip archive; what its headers say may differ from what it holds.
struct Entry {
    QByteArray name, content = "content";
    quint16 flags = 0; // 1: encrypted
    quint16 unixType = 0100000;
    quint32 sizeMore = 0, checksumMore = 0;
    quint16 method = 0; // 8: packed
};

quint32 checksumOf(const QByteArray& bytes) {
    quint32 rest = ~0U;
    for (const char byte : bytes) {
        rest ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            rest = rest >> 1 ^ (rest & 1U ? 0xedb88320U : 0U);
    }
    return ~rest;
}

/// Each number in as many bytes as its type has.
template <typename... Numbers>
QByteArray joined(Numbers... numbers) {
    return (QByteArray(reinterpret_cast<const char*>(&numbers), sizeof numbers) + ...);
}

QByteArray zip(const QList<Entry>& entries) {
    QByteArray bytes, directory;
    for (const auto& [name, content, flags, type, sizeMore, checksumMore, method] : entries) {
        // Packed without zlib's header and checksum.
        const QByteArray stored = method == 0 ? content : qCompress(content, 9).mid(6).chopped(4);
        const QByteArray common =
            joined(quint16{20}, flags, method, 33U << 16, checksumOf(content) + checksumMore,
                   static_cast<quint32>(stored.size()), static_cast<quint32>(content.size()) + sizeMore,
                   static_cast<quint32>(name.size()));
        directory += "PK\1\2\24\3" + common + QByteArray(6, '\0') +
                     joined((type | 0644U) << 16, static_cast<quint32>(bytes.size())) + name;
        bytes += "PK\3\4" + common + name + stored;
    }
    const auto count = static_cast<quint16>(entries.size());
    return bytes + directory + "PK\5\6" +
           joined(0U, count, count, static_cast<quint32>(directory.size()),
                  static_cast<quint32>(bytes.size()), quint16{0});
}

} // namespace

TEST(Archive, IsUnpackedOnlyIfSafeAndWhole) {
    const QTemporaryDir folder;
    const QString archive = folder.filePath("archive.zip"), target = folder.filePath("target");
    const auto problemOf = [&](const QByteArray& bytes) {
        writeFile(archive, bytes);
        QFile::remove(target);
        QList<ArchiveFile> files;
        if (QString problem = listArchive(archive, files); !problem.isEmpty())
            return problem;
        ExtractionProgress progress;
        return extractFiles(archive, {{files.constLast().path, target}}, progress);
    };
    const QByteArray content(20'000, 'x');
    const QByteArray good = zip({{"a/", {}, 0, 0040000}, {"a/b.txt", content, 0, 0100000, 0, 0, 8}});
    EXPECT_EQ(problemOf(good), "");
    EXPECT_EQ(bytesOf(target), content);

    for (const char* const name :
         {"../x", "a/../../x", "/x", "C:/x", "C:x", "a\\..\\x", "a//x", "./x", "", "x.", "x ", "con",
          "a/NUL.txt", "Com1 .dat", "a:stream", "x\x01", "za\xc5\xbc\xc3\xb3\xc5\x82\xc4\x87", "a?"})
        EXPECT_NE(problemOf(zip({{name}})), "") << name;
    for (const auto& [first, second] :
         {std::pair("a/X", "a/x"), {"A/x", "a/y"}, {"x", "x"}, {"a", "a/x"}, {"a/x", "A"}})
        EXPECT_NE(problemOf(zip({{first}, {second}})), "") << first << " " << second;
    EXPECT_NE(problemOf(zip({{"link", "/etc/passwd", 0, 0120000}})), "");
    EXPECT_NE(problemOf(zip({{"x", "0123456789abcdef", 1}})), "") << "encrypted";
    EXPECT_NE(problemOf(zip({{"x", "text", 0, 0100000, 0, 1}})), "") << "checksum";
    for (const quint32 more : {1U, 0xfffff000U, 0x7fffffffU})
        EXPECT_NE(problemOf(zip({{"x", content, 0, 0100000, more, 0, 8}})), "") << "size " << more;
    EXPECT_NE(problemOf(zip({{"x", QByteArray(8'000'000, '\0'), 0, 0100000, 0, 0, 8}})), "") << "ratio";
    QList<Entry> many;
    for (int i = 0; i <= mostArchiveEntries; ++i)
        many.append({QByteArray::number(i)});
    EXPECT_NE(problemOf(zip(many)), "");
    for (qsizetype length = 0; length < good.size(); length += 7)
        EXPECT_NE(problemOf(good.left(length)), "") << length;
    for (qsizetype at = 0; at < good.size(); ++at) { // must not crash
        QByteArray changed = good;
        changed[at] = static_cast<char>(changed[at] ^ 0xff);
        problemOf(changed);
    }
}

TEST(SpeechPackage, IsRefusedWithTheReason) {
    const QTemporaryDir folder;
    const QString archive = folder.filePath("archive.zip");
    const auto problemOf = [&](const QByteArrayList& names) {
        QList<Entry> entries;
        for (const QByteArray& name : names)
            entries.append({name});
        writeFile(archive, zip(entries));
        SpeechPackage package;
        const QString problem = recognisePackage(archive, package);
        return problem.isEmpty() ? package.folder : problem;
    };
    const QByteArrayList parts{"am/final.mdl", "conf/mfcc.conf", "conf/model.conf", "graph/Gr.fst",
                               "graph/HCLr.fst"};
    const auto model = [&](const QByteArray& root, qsizetype count = 5) {
        QByteArrayList names;
        for (const QByteArray& part : parts.first(count))
            names.append(root + part);
        return names;
    };
    EXPECT_EQ(problemOf(model("vosk-model-small-pl-0.30/")), "vosk-model-small-pl-0.30");
    for (const char* const root : {"", "icons/", "x/y/"})
        EXPECT_EQ(problemOf(model(root)), "vosk-model-small-pl-0.22") << root;
    const std::array<std::pair<QByteArrayList, const char*>, 6> refused{
        {{model("m/", 4), "graph/HCLr.fst"},
         {model("m/", 2), "conf/model.conf"},
         {model("vosk-model-small-en-us-0.15/"), "innego języka"},
         {model("a/") + model("b/"), "kilka"},
         {{"a/model.zip"}, "model.zip"},
         {{"libvosk.dylib"}, "innego systemu"}}};
    for (const auto& [names, reason] : refused)
        EXPECT_TRUE(problemOf(names).contains(reason)) << reason;
    const QByteArray name = speechLibraryFileName().toUtf8();
    writeFile(archive, zip({{name}, {"version.dll"}, {"libstdc++-6.dll"}, {"x/libgcc_s_seh-1.dll"}}));
    SpeechPackage package;
    EXPECT_EQ(recognisePackage(archive, package), "");
    EXPECT_EQ(package.files.size(), name.endsWith(".dll") ? 2 : 1);
    const QString library = folder.filePath("library");
    for (const QByteArray& bytes : {QByteArray(), QByteArray("MZ"), QByteArray("\177ELF")}) {
        writeFile(library, bytes);
        EXPECT_TRUE(checkSpeechLibrary(library).contains("nie jest biblioteką"));
    }
}

TEST(FilePlacement, ChangesAllOrNothingAlsoAfterACrash) {
    enum class End { crash, deferred, confirmed };
    for (const End end : {End::crash, End::deferred, End::confirmed}) {
        const bool isConfirmed = end == End::confirmed;
        const QTemporaryDir folder;
        const QDir data(folder.path());
        const std::filesystem::path dataFolder(folder.path().toStdU16String());
        const auto work = makeWorkFolder(dataFolder);
        const QDir fresh(QString::fromStdU16String(work.u16string()) + "/new");
        for (const QDir& place : {data, fresh}) {
            const QByteArray text = place == fresh ? "new" : "old";
            ASSERT_TRUE(place.mkdir("model"));
            writeFile(place.filePath("model/file"), text);
            writeFile(place.filePath("library"), text);
        }
        writeFile(fresh.filePath("added"), "new");
        EXPECT_FALSE(placeFiles(work, {u8"library", u8"added", u8"missing"}));
        EXPECT_EQ(bytesOf(data.filePath("library")), "old");
        EXPECT_FALSE(data.exists("added"));
        writeFile(data.filePath("settings"), "old");
        EXPECT_TRUE(keepForRestoring(work, u8"settings") && keepForRestoring(work, u8"notes"));
        for (const char* const name : {"settings", "notes"})
            writeFile(data.filePath(name), "new");
        EXPECT_TRUE(placeFiles(work, {u8"library", u8"added", u8"model"}));
        EXPECT_EQ(bytesOf(data.filePath("model/file")), "new");
        EXPECT_TRUE(!isConfirmed || confirmPlacement(work));
        const auto later = makeWorkFolder(dataFolder); // another one, on top
        writeFile(QString::fromStdU16String((later / "new/library").u16string()), "newest");
        EXPECT_TRUE(placeFiles(later, {u8"library"}));
        if (end == End::deferred) {
            forgetKept(work, u8"settings");
            EXPECT_TRUE(deferConfirmation(work));
            EXPECT_EQ(unplaceUnconfirmed(dataFolder).onTrial, std::vector{work});
            EXPECT_EQ(bytesOf(data.filePath("library")), "new");
        }
        for (const auto& each : unplaceUnconfirmed(dataFolder).ended) // the next start
            removeWorkFolder(each);
        EXPECT_EQ(bytesOf(data.filePath("settings")), end == End::crash ? "old" : "new");
        for (const char* const name : {"library", "model/file"})
            EXPECT_EQ(bytesOf(data.filePath(name)), isConfirmed ? "new" : "old");
        EXPECT_EQ(data.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
                  isConfirmed ? 5 : 3);
    }
}
