#pragma once

namespace rotika {

// Start and stop of the voice and gaze threads. Owner thread.

/// Starts or stops the gaze thread according to gazeEnabled. A thread that has ended by itself still counts
/// as running: it is restarted only after the setting was off.
void applyGazeSetting();

/// The same for the voice thread.
void applyVoiceSetting();

/// Stops the gaze and the voice thread, or abandons them after 1.5 and 2 s. Their status is kept.
void stopWorkers();

} // namespace rotika
