#include "shell/base/key_repeat.h"

#include <QKeyEvent>

void watchKeyRepeats() {}

void forgetHeldKeys() {}

bool isRepetition(const QKeyEvent& press) {
    return press.isAutoRepeat();
}
