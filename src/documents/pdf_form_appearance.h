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
    bool mayBeCut = false;          // nothing is lost with what can't be seen of it
};

// How a field wants it, from wherever it inherits that.
struct FormTextStyle {
    std::string appearance;  // "/Helv 12 Tf 0 g"
    QPDFObjectHandle fonts;  // by the names that may stand there
    int alignment = 0;       // 0 left, 1 centred, 2 right
};

// Draws the text into the widget, in place of what it looks like. Text that has no room is drawn smaller,
// down to 4 points. kNoCharacters when no font at hand has its characters; kNoRoom when part of it could not
// be seen even so: of a list, of the choices that were made. A widget without extent is not meant to be seen.
enum class FormTextResult { kDrawn, kNoCharacters, kNoRoom };
FormTextResult DrawFormText(QPDF& pdf, QPDFObjectHandle widget, const FormText& text,
                            const FormTextStyle& style);

// Gives a check box that looks like nothing a cross for the state of this name.
void DrawCheckMark(QPDF& pdf, QPDFObjectHandle widget, const std::string& state);

}  // namespace quirepress
