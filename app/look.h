#pragma once

/// Gives the running QApplication, with the widgets that it has by now, the suite's style sheet and
/// font.
void setSuiteLook();
