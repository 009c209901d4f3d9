#pragma once

class QWidget;

// Handles the events that are pending now and those that handling them posts, until none is
// left; timers that are not yet due are not waited for.
void drainEvents();

// Shows `window` and handles events until `canvas` has been painted and nothing is pending any
// more; false if it was not painted within ten seconds.
bool showUntilPainted(QWidget* window, QWidget* canvas);
