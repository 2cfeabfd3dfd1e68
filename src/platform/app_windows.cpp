#include "platform/app_windows.h"

namespace quirepress {

std::string WithoutMnemonic(std::string_view caption) {
    std::string text;
    for (std::size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] == '&' && ++i == caption.size()) break;
        text += caption[i];
    }
    return text;
}

}  // namespace quirepress
