#pragma once

/// Has the toolkit's own texts, such as those of the buttons "Yes" and "Cancel", in Polish whatever the
/// system's language. Call once there is an application. The program's own texts are Polish as they stand.
void speakPolish();
