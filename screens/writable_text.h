#pragma once

#include <QString>

class QLineEdit;

namespace mirelo::screens {

// What a text box hands on to be stored: its text without the characters no file can hold, the
// control characters but tab, line feed and carriage return that a paste from a word processor
// carries, and halves of a character. A box drops them as they come, so it never shows what it
// couldn't hand on.
QString WritableText(const QString &text);

// A one-line box drops those characters from whatever comes into it, pasted or otherwise.
void keepWritableText(QLineEdit *box);

} // namespace mirelo::screens
