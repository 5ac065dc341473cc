#include "core/status_texts.h"

#include "base/text.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/status_codes.h"
#include "platform/device_libraries.h"

#include <array>
#include <cstddef>

namespace rotika {

namespace {

// Indexed by status code; an unknown code shows the last text. Null stands for the text about the missing
// library, which contains its file name.
constexpr std::array<const char16_t*, 6> gazeTexts{
    u"wyłączony (gazeEnabled = false)",
    u"szukanie urządzenia…",
    nullptr,
    u"nie wykryto urządzenia",
    u"aktywny",
    u"błąd inicjalizacji",
};

constexpr std::array<const char16_t*, 7> voiceTexts{
    u"wyłączony (voiceEnabled = false)",
    u"ładowanie modelu…",
    nullptr,
    u"brak katalogu modelu języka",
    u"brak mikrofonu",
    u"aktywny",
    u"błąd inicjalizacji",
};

template <std::size_t count>
const char16_t* textForCode(const std::array<const char16_t*, count>& texts, std::int32_t code,
                            const std::u16string& libraryMissing) {
    const bool isKnown = code >= 0 && static_cast<std::size_t>(code) < count;
    const char16_t* text = isKnown ? texts[static_cast<std::size_t>(code)] : texts.back();
    return text != nullptr ? text : libraryMissing.c_str();
}

constexpr char16_t helpBlock[] = u"'  aby pokazać / schować nakładkę.\n"
                                 u"•  Gdy koło jest widoczne, prawdziwa mysz jest zablokowana,\n"
                                 u"    a polami steruje wirtualny kursor (działa też w grach FPS).\n"
                                 u"•  Najedź wirtualnym kursorem na pole — stanie się\n"
                                 u"    nieprzezroczyste; kliknięcie chowa koło i wykonuje funkcję.\n\n"
                                 u"Konfiguracja (w katalogu programu, wczytywana przy starcie):\n"
                                 u"    config.json — kolor pól, klawisz wywołania, czasy\n"
                                 u"    default.json — koła funkcji (nazwy i klawisze pól);\n"
                                 u"    przy kilku kołach strzałki po bokach je przełączają\n"
                                 u"Kół funkcji: ";

constexpr char16_t closingBlock[] =
    u"\nSiatka: \"pokaż siatkę\", cyfry słownie zawężają obszar,\n"
    u"\"kliknij\" / \"dwuklik\" / \"prawy klik\", \"schowaj siatkę\".\n"
    u"Elementy: \"pokaż elementy\", liczba = klik w element,\n"
    u"\"kliknij dwa razy na N\", \"kliknij prawy na N\", \"ukryj elementy\".\n\n"
    u"Minimalizacja / zamknięcie chowa program do zasobnika.\n"
    u"Zakończenie: prawy przycisk na ikonie w zasobniku → Zakończ.";

} // namespace

const char16_t* gazeStatusText() {
    static const std::u16string& libraryMissing =
        *new std::u16string(u"brak " + gazeLibraryName() + u" (zainstaluj oprogramowanie Tobii)");
    return textForCode(gazeTexts, engineState.gazeStatus, libraryMissing);
}
const char16_t* voiceStatusText() {
    static const std::u16string& libraryMissing = *new std::u16string(u"brak " + speechLibraryName());
    return textForCode(voiceTexts, engineState.voiceStatus, libraryMissing);
}

std::u16string statusPageText() {
    const std::size_t fieldCount = engineState.wheels.empty() ? 0 : engineState.wheels.front().actions.size();
    return u"Rotika — koło wyboru funkcji\n\n•  Naciśnij  '" + engineConfig.toggleKey + helpBlock +
           decimalText(static_cast<std::int64_t>(engineState.wheels.size())) + u", pól w pierwszym: " +
           decimalText(static_cast<std::int64_t>(fieldCount)) + u"\nTobii Eye Tracker: " + gazeStatusText() +
           u"\nKomendy głosowe: " + voiceStatusText() + closingBlock;
}

} // namespace rotika
