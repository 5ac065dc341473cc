#include "shell/process/command_line.h"

#include <QFileInfo>
#include <optional>

namespace {

std::optional<Launch> launchOf(const QString& word) {
    constexpr std::pair<const char*, Launch> words[] = {{"--minimized", Launch::minimized},
                                                        {"--install-voice", Launch::installVoice},
                                                        {"--quit", Launch::quit},
                                                        {"--version", Launch::version},
                                                        {"--help", Launch::help}};
    for (const auto& [name, launch] : words)
        if (word == QLatin1String(name))
            return launch;
    return std::nullopt;
}

/// A session manager that restarts the program adds an option of Qt's own.
QStringList withoutSessionId(QStringList arguments) {
    const qsizetype at = arguments.indexOf(QStringLiteral("-session"));
    if (at >= 0 && at + 1 < arguments.size())
        arguments.remove(at, 2);
    return arguments;
}

CommandLine fault(const QString& text) {
    const QString advice = QStringLiteral("Polecenie „rotika --help” wyświetla listę dozwolonych opcji.");
    return {Launch::invalid, {}, text + '\n' + advice};
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments) {
    QStringList words = withoutSessionId(arguments);
    if (words.isEmpty())
        return {};
    const QString word = words.takeFirst();
    const std::optional<Launch> launch = launchOf(word);
    if (!launch)
        return fault(QStringLiteral("Nieznana opcja: %1").arg(word));
    if (launch != Launch::installVoice && !words.isEmpty())
        return fault(QStringLiteral("Po opcji %1 niczego już nie można podać: %2").arg(word, words.first()));
    CommandLine line{*launch, {}, {}};
    for (const QString& file : words) {
        if (file.startsWith(QLatin1String("--")))
            return fault(QStringLiteral("To nie jest nazwa pliku: %1").arg(file));
        line.files.append(QFileInfo(file).absoluteFilePath());
    }
    return line;
}

QString commandLineHelp() {
    return QStringLiteral("Rotika %1 — koło funkcji dla każdego programu\n"
                          "\n"
                          "Użycie: rotika [OPCJA]\n"
                          "\n"
                          "  (bez opcji)                otwiera okno programu\n"
                          "  --minimized                zaczyna w zasobniku systemowym, bez okna\n"
                          "  --install-voice [PLIK…]    instaluje głos z pobranych archiwów;\n"
                          "                             bez plików pyta o nie w oknie\n"
                          "  --quit                     kończy działający program i czeka, aż się zakończy\n"
                          "  --version                  wyświetla wersję\n"
                          "  --help                     wyświetla tę pomoc\n"
                          "\n"
                          "Kod wyjścia: 0 — w porządku, 1 — polecenia nie udało się wykonać,\n"
                          "2 — błędna opcja.")
        .arg(QStringLiteral(ROTIKA_VERSION));
}
