#pragma once

#include <QString>

class QWidget;

// Types text into a widget key by key, as the operator would: each character makes a key press
// and a release, so that line edits emit textEdited. Unlike QTest::keyClicks it takes any
// letter, Cyrillic included.
void typeText(QWidget* widget, const QString& text);
