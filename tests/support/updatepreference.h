#pragma once

/// Leaves the answer to whether updates are looked for where the application that is to be started
/// finds it, so that it need not ask.
void chooseManualUpdates();
void chooseAutomaticUpdates();
