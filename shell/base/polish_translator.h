#pragma once

/// Translates Qt's own texts, such as "Yes" and "Cancel", into Polish whatever the system's language is. The
/// program's own texts are Polish in the source. Call once, after creating the application.
void installPolishTranslator();
