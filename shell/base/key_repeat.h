#pragma once

/// Lets the system send a key that is held down without releases between its repeats, so that each release is
/// one of the key. Main thread, after the application has been created. False where that is not needed, since
/// Qt then marks every repeat.
bool makeReleasesGenuine();
