#pragma once

#include <QPlainTextEdit>
#include <string>

namespace mirelo::screens {

// A multi-line box for a note or a reason at its designed place, with its vertical scroll bar
// always on show.
QPlainTextEdit *makeNoteTextBox(QWidget *parent, const char *name, int left, int top, int width,
                                int height);

// The box's text as it is saved: lines broken by CR LF.
std::string BoxText(const QPlainTextEdit *box);
// Shows a text whose lines are broken by CR LF.
void setBoxText(QPlainTextEdit *box, const std::string &text);

} // namespace mirelo::screens
