#pragma once

class QMessageBox;

/// Lets a text scroll that would make its box higher than the screen. For a box that is complete.
void keepOnScreen(QMessageBox *box);

/// A message box has no minimum width of its own: a row below its parts holds it open.
void setLeastWidth(QMessageBox *box, int pixels);
