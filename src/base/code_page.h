#pragma once

#include <array>
#include <string>
#include <string_view>

namespace quirepress {

// A single-byte code page, in which texts of older systems are written: bytes below 128 are ASCII, each other
// one stands for a code point of its own.
struct CodePage {
    std::array<char16_t, 128> highBytes;  // the code points of the bytes from 128 on
};

// The five bytes that it leaves open stand for U+0081, U+008D, U+008F, U+0090 and U+009D, so that every byte
// string has a reading.
const CodePage& Windows1252();

std::string DecodeText(std::string_view bytes, const CodePage& page);  // to UTF-8

// False when `text` is not valid UTF-8 or holds what has no place in the page; `bytes` stays untouched then.
bool EncodeText(std::string_view text, const CodePage& page, std::string& bytes);

}  // namespace quirepress
