#pragma once

/// Keeps Qt from telling assistive technology of a focus that is elsewhere. To be called once, on the main
/// thread, before the first window.
void installAccessibility();
