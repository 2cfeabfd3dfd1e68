#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_page_color.h"

namespace quirepress {

// Pictures of pages as renderers write them one behind the other (raw PGM and PPM, 8 bits), in pieces of any
// size. Only a page's colour is kept, not the picture.
class PageImages {
public:
    // `rule` for what is grey everywhere; a few pixels may differ by more, as noise does.
    explicit PageImages(const GreyRule& rule) : m_rule(rule) {}

    // False when what comes is no such picture, or too large a one.
    bool Take(std::string_view bytes);
    // Of the pictures that have come whole.
    const std::vector<PageColor>& Colors() const { return m_colors; }

private:
    bool TakeHeader();
    void TakePixels();

    GreyRule m_rule;
    std::string m_bytes;  // not looked at yet
    std::vector<PageColor> m_colors;
    bool m_hasHeader = false;
    bool m_hasHues = false;  // the picture has three values a pixel
    long long m_pixels = 0;  // of the picture
    long long m_left = 0;
    long long m_tinted = 0;
    long long m_bright = 0;
};

}  // namespace quirepress
