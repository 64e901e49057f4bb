#pragma once

/// Gives the running QApplication, with the widgets that it has by now, the suite's style sheet and
/// font. On a dark desktop the line edits of its windows, and of their dialogs, are kept dark on
/// light.
void setSuiteLook();
