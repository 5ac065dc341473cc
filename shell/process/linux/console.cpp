#include "shell/process/console.h"

#include <QFile>
#include <cstdio>
#include <cstring>

QStringList programArguments(int argc, char** argv) {
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QFile::decodeName(argv[i]));
    return words;
}

void printText(const QString& text, bool isFault) {
    const QByteArray line = text.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), isFault ? stderr : stdout);
}

void forgetRestart(char** argv) {
    for (char** word = argv; *word != nullptr; ++word)
        if (std::strcmp(*word, "--restart") == 0)
            **word = '\0'; // also in what the system tells others
}
