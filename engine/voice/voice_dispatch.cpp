#include "voice/voice_dispatch.h"

#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "platform/messages.h"
#include "voice/phrase_table.h"

namespace rotika {

void dispatchRecognisedText(std::string_view text) {
    PhraseEntry row;
    if (text.empty() || !findPhrase(text, row))
        return;
    const WindowHandle main = engineState.mainWindow;
    if (row.command != 0) {
        postWindowMessage(main, MsgVoiceCommand, static_cast<std::uintptr_t>(row.command));
    } else if (row.wheelIndex == VoiceActionsWheel) {
        postWindowMessage(main, MsgVoiceFunction, static_cast<std::uintptr_t>(row.actionIndex));
    } else if (engineConfig.voiceGlobal || engineState.wheelVisible) {
        // Benign race: either may change at this moment, and speech is not timed that exactly.
        postWindowMessage(main, MsgVoiceField, static_cast<std::uintptr_t>(row.wheelIndex), row.actionIndex);
    }
}

} // namespace rotika
