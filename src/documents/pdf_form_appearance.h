#pragma once

#include <qpdf/QPDF.hh>
#include <string>
#include <vector>

namespace quirepress {

// What a text field, or a field of choices, shows.
struct FormText {
    std::string text;  // UTF-8; lines between "\n"
    bool isMultiline = false;
    int cells = 0;                  // of a comb, a character in each; 0: it is none
    std::vector<bool> chosenLines;  // of a list that is open, those to be marked
};

// How a field wants it, from wherever it inherits that.
struct FormTextStyle {
    std::string appearance;  // "/Helv 12 Tf 0 g"
    QPDFObjectHandle fonts;  // by the names that may stand there
    int alignment = 0;       // 0 left, 1 centred, 2 right
};

// Draws the text into the widget, in place of what it looks like. Text that has no room is drawn smaller,
// down to 4 points, and cut off there. False when no font at hand has its characters.
bool DrawFormText(QPDF& pdf, QPDFObjectHandle widget, const FormText& text, const FormTextStyle& style);

// Gives a check box that looks like nothing a cross for the state of this name.
void DrawCheckMark(QPDF& pdf, QPDFObjectHandle widget, const std::string& state);

}  // namespace quirepress
