#pragma once

#include <array>
#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <string_view>

namespace quirepress {

// A font of one byte a character, for the text of a field.
struct FormFont {
    QPDFObjectHandle dictionary;
    std::array<double, 256> widths;  // in thousandths of its size
};

// The field's own font where it has all of the text, as those of bar codes and machine-readable numbers must;
// else one of the fonts that every printer knows, of the same family. `bytes` is `text` (UTF-8) as the font
// encodes it. False when it has characters that no such font has: only those of Western European languages
// are there.
bool ChooseFormFont(const QPDFObjectHandle& own, std::string_view text, FormFont& font, std::string& bytes);

// How far the bytes reach at size 1.
double WidthOf(const FormFont& font, std::string_view bytes);

}  // namespace quirepress
