#include "editor/editor_controls.h"

#include <array>

namespace rotika {

namespace {

using enum EditorControlKind;

constexpr EditorControl control(std::int32_t id, EditorControlKind kind, const char16_t* text, std::int32_t x,
                                std::int32_t y, std::int32_t width, std::int32_t height) {
    return {id, kind, text, {x, y, x + width, y + height}};
}

// clang-format off
constexpr std::array controls{
    control(newButton, button, u"Nowy", 10, 10, 80, 28),
    control(openButton, button, u"Otwórz…", 95, 10, 90, 28),
    control(saveButton, button, u"Zapisz", 190, 10, 80, 28),
    control(saveAsButton, button, u"Zapisz jako…", 275, 10, 110, 28),
    control(activateButton, defaultButton, u"Aktywuj", 392, 10, 90, 28),
    control(pathLabel, oneLineLabel, u"", 490, 10, 395, 28),

    control(0, centredLabel, u"Koło:", 10, 48, 40, 26),
    control(wheelList, scrollingDropDown, u"", 52, 48, 190, 200),
    control(wheelNameEdit, edit, u"", 250, 48, 170, 26),
    control(renameWheelButton, button, u"Zmień nazwę", 425, 48, 110, 26),
    control(addWheelButton, button, u"+ koło", 540, 48, 70, 26),
    control(removeWheelButton, button, u"− koło", 615, 48, 70, 26),

    control(0, label, u"Funkcje koła:", 10, 86, 200, 20),
    control(fieldList, list, u"", 10, 108, 225, 336),
    control(addFieldButton, button, u"Dodaj", 10, 450, 70, 28),
    control(editFieldButton, button, u"Edytuj", 85, 450, 70, 28),
    control(removeFieldButton, button, u"Usuń", 160, 450, 75, 28),

    control(0, centredLabel, u"Nazwa:", 255, 86, 60, 26),
    control(fieldNameEdit, edit, u"", 320, 86, 165, 26),
    control(0, centredLabel, u"Kolor:", 495, 86, 48, 26),
    control(fieldColorEdit, edit, u"", 545, 86, 85, 26),
    control(0, centredLabel, u"Głos:", 640, 86, 45, 26),
    control(fieldVoiceEdit, edit, u"", 688, 86, 197, 26),
    control(0, centredLabel, u"Odstęp między czynnościami [ms]:", 255, 118, 230, 26),
    control(fieldDelayEdit, numberEdit, u"", 490, 118, 60, 26),
    control(0, centredLabel, u"Ikona:", 570, 118, 48, 26),
    control(fieldIconEdit, edit, u"", 620, 118, 200, 26),
    control(chooseIconButton, button, u"…", 825, 118, 30, 26),

    control(0, label, u"Czynności:", 255, 152, 100, 20),
    control(stepList, list, u"", 255, 174, 460, 150),
    control(stepUpButton, button, u"▲", 722, 174, 40, 32),
    control(stepDownButton, button, u"▼", 722, 210, 40, 32),
    control(removeStepButton, button, u"Usuń krok", 722, 246, 100, 32),

    control(0, centredLabel, u"Klawisz:", 255, 334, 60, 26),
    control(stepKeyEdit, edit, u"", 318, 334, 90, 26),
    control(0, centredLabel, u"Akcja:", 418, 334, 48, 26),
    control(stepKindList, dropDown, u"", 468, 334, 170, 130),
    control(0, centredLabel, u"Wartość:", 648, 334, 62, 26),
    control(stepValueEdit, numberEdit, u"", 712, 334, 60, 26),
    control(addStepButton, button, u"Dodaj krok", 255, 368, 100, 28),
    control(replaceStepButton, button, u"Zamień krok", 360, 368, 110, 28),
    control(0, label,
            u"Wartość: klik = liczba kliknięć (domyślnie 1);  przytrzymaj = czas w ms, 0 = trzymaj bez "
            u"puszczania (puszczenie osobną czynnością).",
            255, 404, 630, 36),
    control(writeFieldButton, button, u"Zapisz funkcję na liście", 255, 450, 180, 28),
};
// clang-format on

/// Indexed by StepKind.
constexpr std::array stepKindTexts{
    u"klik (naciśnij i puść)",
    u"przytrzymaj",
    u"puść",
    u"otwórz (adres / program)",
};

} // namespace

void createEditorControls(WindowHandle window) {
    for (const EditorControl& each : controls)
        addEditorControl(window, each);
    for (const char16_t* text : stepKindTexts)
        addListRow(window, stepKindList, text);
    setListSelection(window, stepKindList, 0);
    setInterfaceFont(window);
}

} // namespace rotika
