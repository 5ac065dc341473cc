#pragma once

namespace rotika {

// The voice and the gaze thread, as the settings want them. Owner thread.

/// Starts or ends the gaze thread as its setting says. A thread that has ended by itself still counts as
/// running: it is started anew only after the setting was off.
void followGazeSetting();

/// The same for the voice thread.
void followVoiceSetting();

/// Ends the gaze and the voice thread, or abandons them after 1.5 and 2 s. Their status stays.
void stopWorkers();

} // namespace rotika
