#include "shell/process/command_line.h"

#include <QFileInfo>
#include <algorithm>
#include <iterator>
#include <optional>

namespace {

struct Word {
    const char* name;
    Launch launch;
    QStringView command = {}; // what is sent
};

constexpr Word words[] = {{"--minimized", Launch::minimized},
                          {"--restart", Launch::window},
                          {"--show", Launch::command, showCommand},
                          {"--toggle-wheel", Launch::command, toggleWheelCommand},
                          {"--toggle-key", Launch::command, toggleKeyCommand},
                          {"--install-voice", Launch::command, installVoiceCommand},
                          {"--voice", Launch::command},
                          {"--quit", Launch::quit},
                          {"--version", Launch::version},
                          {"--help", Launch::help}};

/// A session manager that restarts the program adds an option of Qt's own.
QStringList withoutSessionId(QStringList arguments) {
    const qsizetype at = arguments.indexOf(QStringLiteral("-session"));
    if (at >= 0 && at + 1 < arguments.size())
        arguments.remove(at, 2);
    return arguments;
}

CommandLine fault(const QString& text) {
    const QString advice = QStringLiteral("Polecenie „rotika --help” wyświetla listę dozwolonych opcji.");
    return {Launch::invalid, false, {}, text + '\n' + advice};
}

CommandLine tooMuch(const QString& word, const QString& next) {
    return fault(QStringLiteral("Po opcji %1 niczego już nie można podać: %2").arg(word, next));
}

CommandLine withFiles(CommandLine line, const QStringList& files) {
    for (const QString& file : files) {
        if (file.startsWith(QLatin1String("--")))
            return fault(QStringLiteral("To nie jest nazwa pliku: %1").arg(file));
        line.command.arguments.append(QFileInfo(file).absoluteFilePath());
    }
    return line;
}

/// Takes the words that belong to `word` off the rest.
std::optional<CommandLine> readWord(const QString& word, QStringList& rest) {
    const auto* const found = std::find_if(std::begin(words), std::end(words), [&word](const Word& known) {
        return word == QLatin1String(known.name);
    });
    if (found == std::end(words))
        return std::nullopt;
    CommandLine line;
    line.launch = found->launch;
    line.command.name = found->command.toString();
    line.isRestart = word == QLatin1String("--restart");
    if (line.isRestart && rest.value(0) == QLatin1String("--minimized")) {
        rest.removeFirst();
        line.launch = Launch::minimized;
    } else if (word == QLatin1String("--voice") && !rest.isEmpty()) {
        const QString state = rest.takeFirst();
        line.command.name = state == QLatin1String("on")    ? voiceOnCommand.toString()
                            : state == QLatin1String("off") ? voiceOffCommand.toString()
                                                            : QString();
    }
    return line;
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments) {
    QStringList rest = withoutSessionId(arguments);
    if (rest.isEmpty())
        return {};
    const QString word = rest.takeFirst();
    const std::optional<CommandLine> line = readWord(word, rest);
    if (!line)
        return fault(QStringLiteral("Nieznana opcja: %1").arg(word));
    if (line->launch == Launch::command && line->command.name.isEmpty())
        return fault(QStringLiteral("Po opcji --voice trzeba podać on albo off."));
    if (line->command.name == installVoiceCommand)
        return withFiles(*line, rest);
    return rest.isEmpty() ? *line : tooMuch(word, rest.first());
}

QString commandLineHelp() {
    return QStringLiteral("Rotika %1 — koło funkcji dla każdego programu\n"
                          "\n"
                          "Użycie: rotika [OPCJA]\n"
                          "\n"
                          "  (bez opcji)                otwiera okno programu\n"
                          "  --minimized                zaczyna w zasobniku systemowym, bez okna\n"
                          "  --restart [--minimized]    kończy działający program i zaczyna od nowa\n"
                          "  --quit                     kończy działający program i czeka, aż się zakończy\n"
                          "  --version                  wyświetla wersję\n"
                          "  --help                     wyświetla tę pomoc\n"
                          "\n"
                          "Polecenia dla działającego programu; jeśli nie działa, najpierw go uruchamiają:\n"
                          "\n"
                          "  --show                     pokazuje okno programu\n"
                          "  --toggle-wheel             pokazuje albo chowa koło, jak jego klawisz\n"
                          "  --voice on|off             włącza albo wyłącza komendy głosowe; off tylko\n"
                          "                             zapisuje to, gdy program nie działa\n"
                          "  --toggle-key               pozwala wybrać klawisz, który otwiera koło\n"
                          "  --install-voice [PLIK…]    instaluje głos z pobranych archiwów;\n"
                          "                             bez plików pyta o nie w oknie\n"
                          "\n"
                          "Kod wyjścia: 0 — w porządku, 1 — polecenia nie udało się wykonać,\n"
                          "2 — błędna opcja.")
        .arg(QStringLiteral(ROTIKA_VERSION));
}
