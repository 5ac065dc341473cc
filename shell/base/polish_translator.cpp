#include "shell/base/polish_translator.h"

#include <QCoreApplication>
#include <QHash>
#include <QTranslator>

namespace {

struct Text {
    const char* source;
    const char16_t* polish;
};

// Our own translations of what the dialogs and controls in use show: Qt's Polish catalogue is under the GPL.
// Equal texts of different classes have one translation. The mnemonics differ within each dialog.
constexpr Text texts[] = {
    // Buttons of dialogs
    {"OK", u"OK"},
    {"&OK", u"&OK"},
    {"Cancel", u"Anuluj"},
    {"&Cancel", u"&Anuluj"},
    {"&Yes", u"&Tak"},
    {"Yes to &All", u"Tak dla &wszystkich"},
    {"&No", u"&Nie"},
    {"N&o to All", u"Ni&e dla wszystkich"},
    {"Open", u"Otwórz"},
    {"&Open", u"&Otwórz"},
    {"Save", u"Zapisz"},
    {"&Save", u"&Zapisz"},
    {"Save All", u"Zapisz wszystko"},
    {"Discard", u"Odrzuć"},
    {"Close", u"Zamknij"},
    {"&Close", u"Za&mknij"},
    {"Close without Saving", u"Zamknij bez zapisywania"},
    {"Apply", u"Zastosuj"},
    {"Reset", u"Przywróć"},
    {"Restore Defaults", u"Przywróć domyślne"},
    {"Abort", u"Przerwij"},
    {"Retry", u"Ponów"},
    {"Ignore", u"Zignoruj"},
    {"Help", u"Pomoc"},
    {"Show Details...", u"Pokaż szczegóły…"},
    {"Hide Details...", u"Ukryj szczegóły…"},
    {"What's This?", u"Co to jest?"},
    {"Enter a value:", u"Podaj wartość:"},
    // Menus of text fields and spin boxes
    {"&Undo", u"&Cofnij"},
    {"&Redo", u"&Ponów"},
    {"Cu&t", u"W&ytnij"},
    {"&Copy", u"&Kopiuj"},
    {"Copy &Link Location", u"Kopiuj &adres odnośnika"},
    {"&Paste", u"Wk&lej"},
    {"Delete", u"Usuń"},
    {"Select All", u"Zaznacz wszystko"},
    {"&Select All", u"&Zaznacz wszystko"},
    {"&Step up", u"&Zwiększ"},
    {"Step &down", u"Z&mniejsz"},
    // Menu of scroll bars
    {"Scroll here", u"Przewiń tutaj"},
    {"Top", u"Początek"},
    {"Bottom", u"Koniec"},
    {"Left edge", u"Lewy brzeg"},
    {"Right edge", u"Prawy brzeg"},
    {"Page up", u"Strona w górę"},
    {"Page down", u"Strona w dół"},
    {"Page left", u"Strona w lewo"},
    {"Page right", u"Strona w prawo"},
    {"Scroll up", u"Przewiń w górę"},
    {"Scroll down", u"Przewiń w dół"},
    {"Scroll left", u"Przewiń w lewo"},
    {"Scroll right", u"Przewiń w prawo"},
    {"Scroll Left", u"Przewiń w lewo"},
    {"Scroll Right", u"Przewiń w prawo"},
    // File dialog
    {"Look in:", u"Folder:"},
    {"File &name:", u"&Nazwa pliku:"},
    {"Files of type:", u"Rodzaj plików:"},
    {"Directory:", u"Folder:"},
    {"&Choose", u"&Wybierz"},
    {"Back", u"Wstecz"},
    {"Go back", u"Wróć do poprzedniego folderu"},
    {"Forward", u"Dalej"},
    {"Go forward", u"Przejdź do następnego folderu"},
    {"Parent Directory", u"Folder nadrzędny"},
    {"Go to the parent directory", u"Przejdź do folderu nadrzędnego"},
    {"Create New Folder", u"Utwórz folder"},
    {"Create a New Folder", u"Utwórz nowy folder"},
    {"&New Folder", u"Nowy &folder"},
    {"New Folder", u"Nowy folder"},
    {"List View", u"Lista"},
    {"Change to list view mode", u"Pokaż listę"},
    {"Detail View", u"Szczegóły"},
    {"Change to detail view mode", u"Pokaż szczegóły"},
    {"Sidebar", u"Pasek boczny"},
    {"List of places and bookmarks", u"Lista miejsc i zakładek"},
    {"Files", u"Pliki"},
    {"Recent Places", u"Ostatnie miejsca"},
    {"My Computer", u"Komputer"},
    {"Computer", u"Komputer"},
    {"Show ", u"Pokaż "},
    {"Show &hidden files", u"Pokaż &ukryte pliki"},
    {"&Rename", u"&Zmień nazwę"},
    {"&Delete", u"&Usuń"},
    {"Remove", u"Usuń"},
    {"Name", u"Nazwa"},
    {"Size", u"Rozmiar"},
    {"Type", u"Rodzaj"},
    {"Kind", u"Rodzaj"},
    {"Date Modified", u"Data zmiany"},
    {"File", u"Plik"},
    {"%1 File", u"Plik %1"},
    {"Folder", u"Folder"},
    {"File Folder", u"Folder"},
    {"Drive", u"Dysk"},
    {"Shortcut", u"Skrót"},
    {"Alias", u"Skrót"},
    {"Unknown", u"Nieznany"},
    {"Save As", u"Zapisz jako"},
    {"Find Directory", u"Znajdź folder"},
    {"Directories", u"Foldery"},
    {"All Files (*)", u"Wszystkie pliki (*)"},
    {"All files (*)", u"Wszystkie pliki (*)"},
    {"%1 already exists.\nDo you want to replace it?", u"%1 już istnieje.\nCzy go zastąpić?"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.",
     u"%1\nNie ma takiego pliku.\nSprawdź, czy nazwa jest właściwa."},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
     u"%1\nNie ma takiego folderu.\nSprawdź, czy nazwa jest właściwa."},
    {"'%1' is write protected.\nDo you want to delete it anyway?",
     u"„%1” jest zabezpieczony przed zapisem.\nCzy mimo to go usunąć?"},
    {"Are you sure you want to delete '%1'?", u"Czy na pewno usunąć „%1”?"},
    {"Could not delete directory.", u"Nie można usunąć folderu."},
    {"Invalid filename", u"Niewłaściwa nazwa pliku"},
    {"<b>The name \"%1\" cannot be used.</b><p>Try using another name, with fewer characters or no "
     "punctuation marks.",
     u"<b>Nie można użyć nazwy „%1”.</b><p>Spróbuj innej, krótszej lub bez znaków przestankowych."},
    // Colour dialog
    {"Select Color", u"Wybierz kolor"},
    {"&Basic colors", u"&Podstawowe kolory"},
    {"&Custom colors", u"&Własne kolory"},
    {"&Add to Custom Colors", u"&Dodaj do własnych kolorów"},
    {"&Pick Screen Color", u"Pobierz kolor z &ekranu"},
    {"Cursor at %1, %2\nPress ESC to cancel", u"Kursor: %1, %2\nEsc anuluje"},
    {"Hu&e:", u"Odc&ień:"},
    {"&Sat:", u"Na&sycenie:"},
    {"&Val:", u"&Jasność:"},
    {"&Red:", u"&Czerwony:"},
    {"&Green:", u"&Zielony:"},
    {"Bl&ue:", u"&Niebieski:"},
    {"A&lpha channel:", u"&Krycie:"},
    {"&HTML:", u"&HTML:"},
    // Keys in tool tips
    {"Up", u"strzałka w górę"},
    {"Down", u"strzałka w dół"},
    {"Return", u"Enter"},
    {"Del", u"Delete"},
    // Names of actions for assistive technology
    {"Press", u"Naciśnij"},
    {"Toggle", u"Przełącz"},
    {"Toggles the state", u"Przełącza stan"},
    {"Triggers the action", u"Wykonuje czynność"},
    {"Increase", u"Zwiększ"},
    {"Increase the value", u"Zwiększa wartość"},
    {"Decrease", u"Zmniejsz"},
    {"Decrease the value", u"Zmniejsza wartość"},
    {"ShowMenu", u"Pokaż menu"},
    {"Shows the menu", u"Pokazuje menu"},
    {"SetFocus", u"Uaktywnij"},
    {"Sets the focus", u"Uaktywnia pole"},
    {"Open the combo box selection popup", u"Rozwija listę wyboru"},
};

class PolishTranslator : public QTranslator {
public:
    explicit PolishTranslator(QObject* parent) : QTranslator(parent) {
        for (const Text& text : texts)
            polish_.insert(text.source, QString::fromUtf16(text.polish));
    }

    bool isEmpty() const override { return false; }

    QString translate(const char*, const char* source, const char*, int) const override {
        return polish_.value(QByteArray::fromRawData(source, qstrlen(source)));
    }

private:
    QHash<QByteArray, QString> polish_;
};

} // namespace

void installPolishTranslator() {
    QCoreApplication::installTranslator(new PolishTranslator(QCoreApplication::instance()));
}
